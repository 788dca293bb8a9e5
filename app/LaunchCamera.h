#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/camera/CameraChoice.h"
#include "platform/camera/CaptureSession.h"
#include "platform/desktop/CameraAuthorization.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// The app's camera, and whether it may be used. Which one it is, is found out at launch while the window
/// comes up; until that is known the permission is undetermined, and whoever asks for it waits.
///
/// Threads: main; the choice runs on a thread of its own, and reaches main by its queue.
/// Owns the capture framework. Borrows its Services, which must outlive the choice.
class LaunchCamera final : public CaptureFramework, public CameraAuthorization {
public:
    struct Services {
        SerialQueue &mainQueue;
        std::function<Result<CameraChoice>()> choose;
        /// A camera that this user may not open, asked where no other is found.
        std::function<std::filesystem::path()> refusedDevice;
        std::function<std::unique_ptr<CaptureFramework>(std::shared_ptr<CameraSource>)> makeFramework;
        /// @param device  of a camera of that kind, or the one that this user may not open; empty: it has
        /// none
        std::function<std::shared_ptr<CameraAuthorization>(CameraChoice::Kind, std::filesystem::path device)>
            makeAuthorization;
    };
    /// Whether it is the simulated one, or why there is no camera.
    using Chosen = std::function<void(const Result<bool> &isSimulated)>;

    explicit LaunchCamera(Services services);
    ~LaunchCamera() override;

    /// Begins to look. `chosen` is called on main, once.
    void choose(Chosen chosen);
    /// The choice is still under way. A program that ends now must not wait for it.
    [[nodiscard]] bool isChoosing() const { return isChoosing_; }

    [[nodiscard]] CameraAuthorizationStatus authorizationStatus() override;
    void requestAccess(std::function<void(bool granted)> completionHandler) override;

    [[nodiscard]] std::shared_ptr<CaptureSession> makeSession() override;
    [[nodiscard]] std::shared_ptr<PhotoOutput> makePhotoOutput() override;
    Result<std::shared_ptr<CaptureDeviceInput>>
    makeDeviceInput(std::shared_ptr<CaptureDevice> device) override;
    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultDevice(DeviceType type,
                                                               DevicePosition position) override;
    [[nodiscard]] std::shared_ptr<CaptureDevice> defaultVideoDevice() override;

private:
    /// What the look has found.
    struct Found {
        Result<CameraChoice> choice;
        std::filesystem::path refusedDevice;
    };

    const Services services_;
    bool isChoosing_ = false;
    std::unique_ptr<CaptureFramework> framework_;
    std::shared_ptr<CameraAuthorization> authorization_; ///< null until the choice is made
    std::vector<std::function<void(bool)>> waiting_;

    [[nodiscard]] static Found look(const Services &services);
    void didChoose(const Found &found, const Chosen &chosen);
};

} // namespace skyflare
