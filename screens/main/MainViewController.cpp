#include "screens/main/MainViewController.h"

#include "platform/base/Localization.h"
#include "screens/main/ForcedUpdate.h"
#include "screens/main/LevelTitles.h"
#include "screens/main/MainPopups.h"
#include "ui/ApplicationNotifications.h"
#include "ui/MainNavigationController.h"
#include "ui/SharedObject.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace skyflare {

namespace {

/// With two digits behind a point, whatever the language.
std::string twoDigits(float value)
{
    std::array<char, 64> text{};
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 2);
    return {text.data(), written.ptr};
}

/// The first row whose title the button bears; null if there is none.
template <typename Rows>
const typename Rows::value_type *rowTitled(const Rows &rows, const ButtonOutlet &button)
{
    const auto found = std::ranges::find_if(
        rows, [title = button.text()](const auto &row) { return titleOf(row) == title; });
    return found == rows.end() ? nullptr : &*found;
}

} // namespace

Storyboard MainViewController::storyboard(const Services &services)
{
    return {"MainViewController",
            {{"MainViewController", QUrl(QStringLiteral("qrc:/Skyflare/Main/MainView.qml")),
              [services] { return makeShared<MainViewController>(services); }}}};
}

MainViewController::MainViewController(const Services &services)
    : services_(services),
      photoDataManager_({services.store, services.notificationCenter, services.clock, services.console,
                         services.thumbnails, &services.storage->room()}),
      logManager_(services.clock, services.console),
      autoSave_({services.photoLibrary, services.console, services.app, logManager_}),
      captureManager_(CaptureManager::make({.mainQueue = services.mainQueue,
                                            .queues = services.queues,
                                            .framework = services.framework,
                                            .clock = services.clock,
                                            .console = services.console,
                                            .app = services.app,
                                            .photoDataManager = photoDataManager_})),
      status_(std::make_shared<StatusLine>(*statusText(), services.mainQueue,
                                           [this] { emit isStatusWarningChanged(); })),
      run_(std::make_shared<CameraRun>(
          CameraRun::Services{.screen = *this,
                              .captureManager = captureManager_,
                              .status = status_,
                              .mainQueue = services.mainQueue,
                              .console = services.console,
                              .logManager = logManager_,
                              .cameraAuthorization = services.cameraAuthorization,
                              .haptics = services.haptics,
                              .urlOpener = services.urlOpener,
                              .idleInhibitor = services.idleInhibitor,
                              .storage = services.storage,
                              .openGallery = [this] { lastPhotoButtonTapped(); }}))
{
    connect(run_.get(), &CameraRun::willStop, this, [this] { setFocusView(nullptr); });
    connect(run_.get(), &CameraRun::isRunningChanged, this, &MainViewController::isRunningChanged);
    connect(run_.get(), &CameraRun::previewLayerChanged, this, &MainViewController::previewLayerChanged);
}

std::weak_ptr<MainViewController> MainViewController::weakSelf()
{
    return std::static_pointer_cast<MainViewController>(shared_from_this());
}

void MainViewController::showPopup(CustomPopupView::Contents contents)
{
    CustomPopupView::make(services_.haptics, std::move(contents))->show(*this);
}

// --- Loading

void MainViewController::viewDidLoad()
{
    MainOutlets::viewDidLoad();
    if (const auto navigation = navigationController())
        navigation->setNavigationBarHidden(true);
    captureManager_->setViewController(weakSelf());
    setUpOutlets();
    updatePhotoCount();
    if (services_.app.firstLaunch())
        showOnboarding(0);
    registerObservers();
    checkForForcedUpdate();
    run_->watchStorage();
    services_.mainQueue.async([weak = weakSelf()] {
        if (const auto self = weak.lock())
            self->prepareSettings();
    });
    services_.notificationCenter.postNotificationName(settingsChanged);
}

void MainViewController::registerObservers()
{
    const auto observe = [this](std::string_view name, void (MainViewController::*handler)()) {
        observations_.push_back(services_.notificationCenter.addObserver(
            name, [weak = weakSelf(), mainQueue = &services_.mainQueue, handler] {
                const auto handle = [weak, handler] {
                    if (const auto self = weak.lock())
                        (*self.*handler)();
                };
                if (mainQueue->isCurrent())
                    handle();
                else // photos are stored on other threads
                    mainQueue->async(handle);
            }));
    };
    observe(applicationWillResignActiveNotification, &MainViewController::applicationWillResignActive);
    observe(countDidChange, &MainViewController::updatePhotoCount);
    observe(settingsChanged, &MainViewController::updateUI);
}

void MainViewController::checkForForcedUpdate()
{
    const auto &remoteConfig = services_.remoteConfig;
    if (!remoteConfig)
        return;
    remoteConfig->setMinimumFetchInterval(0);
    remoteConfig->fetchAndActivateWithCompletionHandler(
        services_.mainQueue, [weak = weakSelf()](const Result<FetchAndActivateStatus> &outcome) {
            const auto self = weak.lock();
            if (!self)
                return;
            const Services &services = self->services_;
            if (!outcome) {
                services.console.printLine("Error fetching config: " + outcome.error().description());
                return;
            }
            const double least = services.remoteConfig->configValueForKey("forceUpdateVersion").numberValue();
            if (!isUpdateForced(services.appInfo.shortVersion, least))
                return;
            self->showPopup(updatePopup(services.urlOpener, services.appInfo.storePage));
        });
}

void MainViewController::prepareSettings()
{
    if (!settingsVC_)
        settingsVC_ = services_.settingsStoryboard.instantiateViewController("SettingsViewSB");
}

// --- Choosing

void MainViewController::toggle(ViewOutlet &container, ViewOutlet &other)
{
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    container.setHidden(!container.isHidden());
    other.setHidden(true);
}

void MainViewController::sensivityButtonTapped()
{
    toggle(*sensitivitySelectionsContainer(), *frequencySelectionsContainer());
}

void MainViewController::frequencyButtonTapped()
{
    toggle(*frequencySelectionsContainer(), *sensitivitySelectionsContainer());
}

void MainViewController::sensivitySelected(const ButtonOutlet *sender)
{
    const SensitivityRow *const chosen = rowTitled(sensitivityRows, *sender);
    if (chosen == nullptr)
        return;
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    captureManager_->setBrightnessThreshold(static_cast<double>(chosen->sensivity));
    services_.app.setSensivity(chosen->sensivity);
    sensitivitySelectionsContainer()->setHidden(true);
}

void MainViewController::frequencySelected(const ButtonOutlet *sender)
{
    const FrequencyRow *const chosen = rowTitled(frequencyRows, *sender);
    if (chosen == nullptr)
        return;
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    captureManager_->setCaptureInterval(chosen->captureInterval);
    services_.app.setFrequency(chosen->captureInterval);
    frequencySelectionsContainer()->setHidden(true);
}

void MainViewController::updateUI()
{
    // Exactly equal: the same literals were stored. What no level has leaves its label as it was.
    const auto sensitivity =
        std::ranges::find(sensitivityRows, services_.app.sensivity(), &SensitivityRow::sensivity);
    if (sensitivity != sensitivityRows.end())
        sensivityLabel()->setText(titleOf(*sensitivity));
    const auto frequency =
        std::ranges::find(frequencyRows, services_.app.frequency(), &FrequencyRow::captureInterval);
    if (frequency != frequencyRows.end())
        frequencyLabel()->setText(titleOf(*frequency));
    manualFocus_ = services_.app.manualFocus();
    lightCurve()->setRise(captureManager_->brightnessThreshold());
}

// --- Running

void MainViewController::mainButtonTapped()
{
    if (isRunning())
        run_->stop();
    else
        run_->start();
}

void MainViewController::startStopKeyPressed()
{
    if (popups()->count() > 0 || presentedViewController())
        return;
    if (onboardingView()->isHidden())
        mainButtonTapped();
    else
        onboardingScreenTapped();
}

void MainViewController::applicationWillResignActive()
{
    run_->stopIfRunning();
}

void MainViewController::setCameraKind(CameraKind kind)
{
    simulatedCameraLabel()->setHidden(kind == CameraKind::Real);
}

// --- What the capture manager reports

void MainViewController::updateLightPower(double brightness)
{
    lightPowerLabel()->setText(twoDigits(static_cast<float>(brightness)));
    lightCurve()->append({services_.clock.secondsOfUptime(), brightness});
}

void MainViewController::updateStatus(const std::optional<std::string> &text, int duration, bool isPermanent)
{
    status_->show(text, duration, isPermanent);
}

void MainViewController::didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference)
{
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Heavy);
    lastDifferenceLabel()->setText(twoDigits(difference));
    ++captureFlashes_; // the view animates the indicator; its own alpha is 0 again when that is over
    emit captureFlashesChanged();
    lastPhotoImageView()->setImage(image);
    photoCountLabel()->setHidden(totalPhotos == 0);
    photoCountLabel()->setText(std::to_string(totalPhotos));
    lastPhotoContainer()->setHidden(false);
    logManager_.logEvent(LogEvent::CatchPhoto, {{"difference", difference}, {"totalPhotos", totalPhotos}});
    autoSave_.handOver(image, services_.clock.secondsSince1970(),
                       [weak = weakSelf(), mainQueue = &services_.mainQueue] {
                           mainQueue->async([weak] {
                               if (const auto self = weak.lock())
                                   self->showPopup(libraryForbiddenPopup());
                           });
                       });
}

void MainViewController::sessionDidChange(const SessionEvent &event)
{
    run_->sessionDidChange(event);
}

// --- Photos, other screens

void MainViewController::updatePhotoCount()
{
    const std::int64_t count = photoDataManager_.photoCount();
    photoCountLabel()->setHidden(count == 0);
    lastPhotoContainer()->setHidden(count == 0);
    photoCountLabel()->setText(std::to_string(count));
    const auto newest = photoDataManager_.fetchImages(1);
    lastPhotoImageView()->setImage(newest.empty() ? std::nullopt : std::optional(newest.front().image));
}

void MainViewController::settingsButtonTapped()
{
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    prepareSettings();
    present(settingsVC_, Animated::Yes);
}

void MainViewController::lastPhotoButtonTapped()
{
    services_.haptics.impactOccurred(ImpactFeedbackStyle::Medium);
    run_->stopIfRunning();
    present(services_.galleryStoryboard.instantiateViewController("PhotoListViewSB"), Animated::Yes);
}

void MainViewController::escapePressed()
{
    const bool isChoosing =
        !sensitivitySelectionsContainer()->isHidden() || !frequencySelectionsContainer()->isHidden();
    if (popups()->count() > 0 || !isChoosing) {
        MainOutlets::escapePressed();
        return;
    }
    sensitivitySelectionsContainer()->setHidden(true);
    frequencySelectionsContainer()->setHidden(true);
}

// --- Onboarding

void MainViewController::infoButtonTapped()
{
    showOnboarding(1);
    logManager_.logEvent(LogEvent::ButtonTapped, {{"buttonName", "infoButton"}});
}

void MainViewController::showOnboarding(int step)
{
    onboardingStep_ = step;
    onboardingView()->show(step);
}

void MainViewController::onboardingScreenTapped()
{
    services_.app.setFirstLaunch(false);
    services_.standardUserDefaults.setObject(PropertyList("yes"), "alreadyLaunched");
    if (onboardingStep_ == onboardingView()->stepCount() - 1)
        onboardingView()->setHidden(true);
    else
        showOnboarding(onboardingStep_ + 1);
}

// --- Focus

void MainViewController::focusPointTapped(QPointF location)
{
    if (!isRunning())
        return;
    if (!manualFocus_)
        qFatal("MainViewController: a run has started before updateUI()");
    if (!*manualFocus_)
        return;
    if (previewLayer() == nullptr) {
        services_.console.printLine("AVCaptureVideoPreviewLayer bulunamadı.");
        return;
    }
    captureManager_->focus(previewLayer()->captureDevicePointOfInterest(location));

    const auto ring = std::make_shared<FocusView>(location);
    setFocusView(ring);
    services_.mainQueue.asyncAfter(std::chrono::milliseconds(ring->lifeMs()),
                                   [weak = weakSelf(), own = std::weak_ptr(ring)] {
                                       const auto self = weak.lock();
                                       if (self && !own.expired()) // else another took its place
                                           self->setFocusView(nullptr);
                                   });
}

void MainViewController::setFocusView(std::shared_ptr<FocusView> ring)
{
    const auto before = std::exchange(focusView_, std::move(ring));
    if (before != focusView_)
        emit focusViewChanged();
}

} // namespace skyflare
