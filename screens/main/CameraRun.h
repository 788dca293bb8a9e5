#pragma once

#include "capture/CaptureManager.h"
#include "logging/LogManager.h"
#include "platform/desktop/CameraAuthorization.h"
#include "platform/desktop/HapticFeedback.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/desktop/URLOpener.h"
#include "screens/main/MainOutlets.h"
#include "screens/main/StatusLine.h"
#include "ui/CustomPopupView.h"
#include "ui/PreviewLayer.h"

#include <memory>

namespace skyflare {

/// The main screen's run: whether one is on, how it begins, by the permission to use the camera, and how it
/// ends, by the user or because the camera is gone.
///
/// Threads: main. Shares the capture manager and the status line; borrows the rest,
/// which must outlive it.
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
    };

    explicit CameraRun(const Services &services) : services_(services) {}

    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// Null while there is no live picture.
    [[nodiscard]] PreviewLayer *previewLayer() const { return previewLayer_.get(); }

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

    void requestAccess();
    void startRun();
    void stopWithWarning(std::string text);
    void toggle();
    void keepScreenAwake();
    void addPreview();
    void setPreviewLayer(std::unique_ptr<PreviewLayer> layer);
    void showPopup(CustomPopupView::Contents contents);
};

} // namespace skyflare
