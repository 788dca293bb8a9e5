#pragma once

#include "platform/camera/CameraSource.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The camera behind a connection to PipeWire that somebody else opens, such as the desktop for a sandbox:
/// the one that PipeWire takes by itself, in the size that it gives by itself.
///
/// Deliberate: it has no identity. Where no camera is behind the connection PipeWire's element hangs for half
/// a minute; the next run does not wait for that one, since it has a connection of its own.
/// Threads: any.
class RemoteCamera final : public CameraSource {
public:
    /// The connection's descriptor, open for as long as it is held.
    using Remote = std::shared_ptr<const int>;
    /// Opens one, for each run anew. Called where a graph is built, so it may wait.
    using OpenRemote = std::function<Result<Remote>()>;

    RemoteCamera(std::string name, OpenRemote openRemote)
        : name_(std::move(name)), openRemote_(std::move(openRemote))
    {
    }

    [[nodiscard]] std::string localizedName() const override { return name_; }
    [[nodiscard]] DevicePosition position() const override { return DevicePosition::Unspecified; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {}; } // known once it runs

    /// Its focus motor is out of reach.
    Result<> lockForConfiguration() override { return {}; }
    void setFocusPointOfInterest(Point /*point*/) override {}
    void setFocusMode(FocusMode /*mode*/) override {}
    void unlockForConfiguration() override {}

    Result<Element> makeElement() const override;
    [[nodiscard]] Pacing pacing() const override { return Pacing::Live; }

private:
    const std::string name_;
    const OpenRemote openRemote_;
};

} // namespace skyflare
