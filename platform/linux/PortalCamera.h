#pragma once

#include "platform/desktop/CameraAuthorization.h"
#include "platform/linux/PortalRequest.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace skyflare {

/// The desktop's camera from within a sandbox, which sees no devices: through the portal's Camera, which
/// asks the user.
///
/// It is undetermined until the user has said yes: whether he said no or put the question away nobody can
/// tell, so each tap asks anew. A new question takes the place of one that is still open, which is not
/// answered then. A portal that is missing, or goes before it answers, counts as a no, and the console hears
/// why, once.
///
/// Threads: main, but for what waits, which must not be on main. Shared. Borrows the bus, whose queue is main
/// and is served meanwhile, and the console.
class PortalCamera final : public CameraAuthorization, public std::enable_shared_from_this<PortalCamera> {
public:
    /// A run that starts waits for 5 s.
    static constexpr std::chrono::milliseconds usualWait{4000};

    /// @param longestWait  for what waits; an answer that comes later is let go of
    PortalCamera(MessageBus &sessionBus, Console &console, std::chrono::milliseconds longestWait = usualWait)
        : bus_(sessionBus), console_(console), longestWait_(longestWait)
    {
    }

    [[nodiscard]] CameraAuthorizationStatus authorizationStatus() override;
    void requestAccess(std::function<void(bool granted)> completionHandler) override;

    /// Whether the desktop has any camera; nothing where its portal does not tell. Waits.
    [[nodiscard]] std::optional<bool> isCameraPresent();

    /// A connection to PipeWire on which the cameras are, and nothing else. Waits. After a failure the
    /// next tap asks the user again.
    [[nodiscard]] Result<std::shared_ptr<const OpenFile>> openPipeWireRemote();

private:
    MessageBus &bus_;
    Console &console_;
    const std::chrono::milliseconds longestWait_;
    std::shared_ptr<PortalRequest> request_; ///< the newest
    std::atomic<bool> isGranted_ = false;
    bool isReported_ = false;

    [[nodiscard]] Result<BusAnswer> callAndWait(BusCall call);
    [[nodiscard]] bool take(const Result<PortalRequest::Answer> &answer);
};

} // namespace skyflare
