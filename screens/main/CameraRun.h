#pragma once

#include "capture/CaptureManager.h"
#include "capture/StorageWatch.h"
#include "logging/LogManager.h"
#include "platform/desktop/CameraAuthorization.h"
#include "platform/desktop/HapticFeedback.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/desktop/URLOpener.h"
#include "screens/main/MainOutlets.h"
#include "screens/main/StatusLine.h"
#include "ui/CustomPopupView.h"
#include "ui/PreviewLayer.h"

#include <functional>
#include <memory>

namespace skyflare {

/// The main screen's run: whether one is on, how it begins, by the permission to use the camera, and how it
/// ends, by the user, because the camera is gone or because there is no room for photos.
///
/// Threads: main. Shares the capture manager, the status line and the watch over the storage; borrows the
/// rest, which must outlive it.
class CameraRun final : public QObject, public std::enable_shared_from_this<CameraRun> {
    Q_OBJECT

public:
    struct Services {
        MainOutlets &screen;
        std::shared_ptr<CaptureManager> captureManager;
        std::shared_ptr<StatusLine> status;
        SerialQueue &mainQueue;
        Console &console;
        LogManager &logManager;
        CameraAuthorization &cameraAuthorization;
        HapticFeedback &haptics;
        URLOpener &urlOpener;
        IdleInhibitor *idleInhibitor; ///< may be null
        std::shared_ptr<StorageWatch> storage;
        std::function<void()> openGallery;
    };

    explicit CameraRun(const Services &services) : services_(services) {}

    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// Null while there is no live picture.
    [[nodiscard]] PreviewLayer *previewLayer() const { return previewLayer_.get(); }

    /// From now on little room for photos is a warning, and no room ends a run.
    void watchStorage();
    /// Starts, or asks for the camera first, or tells why it may not.
    void start();
    void stop();
    void stopIfRunning();
    void sessionDidChange(const SessionEvent &event);

signals:
    void willStop();
    void isRunningChanged();
    void previewLayerChanged();

private:
    const Services services_;
    bool isRunning_ = false;
    IdleInhibitor::Inhibition screenAwake_; ///< while a run is on
    std::unique_ptr<PreviewLayer> previewLayer_;
    bool warnsOfStorage_ = false; ///< the warning that is shown is about little room

    void startIfAllowed();
    void requestAccess();
    void startRun();
    void stopWithWarning(std::string text);
    void storageSeen();
    void showStorageWarning();
    void toggle();
    void keepScreenAwake();
    void addPreview();
    void setPreviewLayer(std::unique_ptr<PreviewLayer> layer);
    void showPopup(CustomPopupView::Contents contents);
};

} // namespace skyflare
