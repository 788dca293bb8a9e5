#include "screens/main/CameraRun.h"

#include "platform/base/Localization.h"
#include "screens/main/MainPopups.h"

#include <utility>

namespace skyflare {

namespace {

std::string cameraGone()
{
    return localized("The camera is gone. Connect it again, then tap Start.");
}

std::string cameraUnusable()
{
    return localized("The camera does not answer. See that it is connected and that no other program uses "
                     "it, then tap Start.");
}

std::string littleRoom()
{
    return localized("The storage is almost full: there is room for fewer than 20 more photos.");
}

} // namespace

void CameraRun::showPopup(CustomPopupView::Contents contents)
{
    CustomPopupView::make(services_.haptics, std::move(contents))->show(services_.screen);
}

void CameraRun::watchStorage()
{
    services_.storage->begin([weak = weak_from_this()](StorageLevel /*level*/) {
        if (const auto self = weak.lock())
            self->storageSeen();
    });
}

/// A run that finds no room ends before anything is lost.
void CameraRun::storageSeen()
{
    showStorageWarning();
    if (services_.storage->level() != StorageLevel::Full || !isRunning_)
        return;
    stop();
    showPopup(noRoomPopup(services_.openGallery));
}

/// A warning about the camera stays where it is.
void CameraRun::showStorageWarning()
{
    if (services_.storage->level() == StorageLevel::Enough) {
        if (std::exchange(warnsOfStorage_, false))
            services_.status->takeBackWarning();
    } else if (!services_.status->isWarning()) {
        warnsOfStorage_ = true;
        services_.status->warn(littleRoom());
    }
}

void CameraRun::start()
{
    if (services_.storage->level() != StorageLevel::Full) {
        startIfAllowed();
        return;
    }
    services_.storage->look([weak = weak_from_this()] { // somebody may have made room
        const auto self = weak.lock();
        if (!self || self->isRunning_)
            return;
        if (self->services_.storage->level() == StorageLevel::Full)
            self->showPopup(noRoomPopup(self->services_.openGallery));
        else
            self->startIfAllowed();
    });
}

void CameraRun::startIfAllowed()
{
    switch (services_.cameraAuthorization.authorizationStatus()) {
    case CameraAuthorizationStatus::Authorized:
        startRun();
        break;
    case CameraAuthorizationStatus::NotDetermined:
        requestAccess();
        break;
    case CameraAuthorizationStatus::Denied:
    case CameraAuthorizationStatus::Restricted:
        showPopup(cameraForbiddenPopup(services_.urlOpener));
        break;
    }
}

void CameraRun::requestAccess()
{
    services_.cameraAuthorization.requestAccess(
        [weak = weak_from_this(), mainQueue = &services_.mainQueue](bool granted) {
            mainQueue->async([weak, granted] {
                const auto self = weak.lock();
                if (!self || self->isRunning_) // a second tap has asked, too
                    return;
                if (granted)
                    self->startRun();
                else
                    self->showPopup(cameraRefusedPopup(self->services_.urlOpener));
            });
        });
}

void CameraRun::startRun()
{
    if (!warnsOfStorage_)
        services_.status->takeBackWarning(); // about the camera: this is a new try
    showStorageWarning();
    services_.screen.lightCurve()->clear();
    toggle();
    services_.screen.cameraBorderView()->setAlpha(1);
    services_.captureManager->start();
    addPreview();
    services_.logManager.logEvent(LogEvent::StartCapture);
    services_.storage->runBegins([weak = weak_from_this()] { // it may have filled while permission was asked
        if (const auto self = weak.lock())
            self->storageSeen();
    });

    const auto session = services_.captureManager->captureSession();
    if (!session || session->outputs().empty())
        stopWithWarning(cameraUnusable()); // no frame would ever come
}

void CameraRun::stop()
{
    emit willStop();
    toggle();
    services_.screen.cameraBorderView()->setAlpha(0);
    setPreviewLayer(nullptr);
    services_.captureManager->setRunningStatus(false);
    if (const auto session = services_.captureManager->captureSession())
        session->stopRunning();
    services_.storage->runEnds();
    services_.logManager.logEvent(LogEvent::StopCapture);
}

void CameraRun::stopIfRunning()
{
    if (isRunning_)
        stop();
}

void CameraRun::stopWithWarning(std::string text)
{
    stop();
    warnsOfStorage_ = false;
    services_.status->warn(std::move(text));
}

void CameraRun::toggle()
{
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    isRunning_ = !isRunning_;
    services_.screen.infoBar()->setHidden(!services_.screen.infoBar()->isHidden());
    services_.screen.mainButton()->setText(localized(isRunning_ ? "Stop" : "Start"));
    services_.screen.mainButton()->setSymbol(isRunning_ ? "stop" : "play");
    keepScreenAwake();
    emit isRunningChanged();
}

/// Nobody touches it during a run, and one that goes dark ends the run.
void CameraRun::keepScreenAwake()
{
    screenAwake_.reset();
    if (isRunning_ && services_.idleInhibitor != nullptr)
        screenAwake_ = services_.idleInhibitor->inhibit(localized("Watching the sky for fireworks"));
}

void CameraRun::addPreview()
{
    const auto session = services_.captureManager->captureSession();
    if (!session) {
        services_.console.printLine("Capture session mevcut değil.");
        return;
    }
    setPreviewLayer(std::make_unique<PreviewLayer>(*session));
}

void CameraRun::setPreviewLayer(std::unique_ptr<PreviewLayer> layer)
{
    const auto before = std::exchange(previewLayer_, std::move(layer)); // lives until the view has let go
    emit previewLayerChanged();
}

void CameraRun::sessionDidChange(const SessionEvent &event)
{
    if (!isRunning_)
        return; // the user was first
    switch (event.kind) {
    case SessionEvent::Kind::Lost:
        services_.console.reportLine(event.message);
        stopWithWarning(cameraGone());
        break;
    case SessionEvent::Kind::Failed:
        services_.console.reportLine(event.message);
        stopWithWarning(cameraUnusable());
        break;
    case SessionEvent::Kind::Ended:
        stop();
        break;
    case SessionEvent::Kind::Started:
        services_.storage->setFrameSize(event.format.width, event.format.height);
        break;
    case SessionEvent::Kind::Stopped:
        break;
    }
}

} // namespace skyflare
