#pragma once

#include "capture/AutoSave.h"
#include "capture/CaptureManager.h"
#include "capture/StorageWatch.h"
#include "platform/base/AppInfo.h"
#include "platform/base/UserDefaults.h"
#include "platform/cloud/FIRRemoteConfig.h"
#include "platform/desktop/CameraAuthorization.h"
#include "platform/desktop/HapticFeedback.h"
#include "platform/desktop/URLOpener.h"
#include "screens/main/CameraRun.h"
#include "screens/main/MainOutlets.h"
#include "ui/CustomPopupView.h"
#include "ui/Storyboard.h"

#include <memory>
#include <optional>
#include <vector>

namespace skyflare {

enum class CameraKind { Real, Simulated };

/// The camera screen: the live picture, the two selectors, start and stop, the read-outs, the last photo, tap
/// to focus, the onboarding and the forced update.
///
/// Threads: main.
/// Owns its CaptureManager, its photo store and its event log. Borrows its Services, which must outlive it.
class MainViewController : public skyflare::MainOutlets, public LightningCaptureManagerDelegate {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")

    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    /// The status tells of something that the user has to mend.
    Q_PROPERTY(bool isStatusWarning READ isStatusWarning NOTIFY isStatusWarningChanged)
    /// Null while there is no live picture.
    Q_PROPERTY(skyflare::PreviewLayer *previewLayer READ previewLayer NOTIFY previewLayerChanged)
    /// Null, or the ring that is to be seen; another object for each tap. It goes by itself after its time.
    Q_PROPERTY(skyflare::FocusView *focusView READ focusView NOTIFY focusViewChanged)
    /// Grows with each captured photo: then the indicator flashes, from alpha 1 to 0 in one second.
    Q_PROPERTY(int captureFlashes READ captureFlashes NOTIFY captureFlashesChanged)

public:
    struct Services {
        App &app;
        UserDefaults &standardUserDefaults;
        NotificationCenter &notificationCenter;
        SerialQueue &mainQueue;
        QueueFactory &queues;
        const Clock &clock;
        Console &console;
        CaptureFramework &framework;
        PersistentContainerProvider &store;
        ThumbnailCache *thumbnails = nullptr; ///< may be null
        std::shared_ptr<StorageWatch> storage;
        CameraAuthorization &cameraAuthorization;
        PhotoLibrary &photoLibrary;
        HapticFeedback &haptics;
        URLOpener &urlOpener;
        IdleInhibitor *idleInhibitor = nullptr;        ///< may be null
        std::shared_ptr<FIRRemoteConfig> remoteConfig; ///< may be empty
        AppInfo appInfo;
        Storyboard settingsStoryboard; ///< "SettingsViewController"
        Storyboard galleryStoryboard;  ///< "PhotoListViewController"
    };

    /// The storyboard "MainViewController" with the one screen of that identifier.
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared(): it hands itself to its capture manager.
    explicit MainViewController(const Services &services);

    void viewDidLoad() override;

    // Actions of the view.
    Q_INVOKABLE void sensivityButtonTapped();
    Q_INVOKABLE void frequencyButtonTapped();
    Q_INVOKABLE void sensivitySelected(const skyflare::ButtonOutlet *sender);
    Q_INVOKABLE void frequencySelected(const skyflare::ButtonOutlet *sender);
    Q_INVOKABLE void mainButtonTapped();
    Q_INVOKABLE void infoButtonTapped();
    Q_INVOKABLE void settingsButtonTapped();
    Q_INVOKABLE void lastPhotoButtonTapped();
    /// @param location  in cameraContainerView, logical pixels
    Q_INVOKABLE void focusPointTapped(QPointF location);
    Q_INVOKABLE void onboardingScreenTapped();
    /// Space, wherever the focus is: starts and stops; over the onboarding it goes on with that.
    Q_INVOKABLE void startStopKeyPressed();

    // What it observes.
    void updatePhotoCount();
    void updateUI();
    void applicationWillResignActive();

    // LightningCaptureManagerDelegate
    void updateLightPower(double brightness) override;
    void updateStatus(const std::optional<std::string> &text, int duration, bool isPermanent) override;
    void didCapturePhoto(const Image &image, std::int64_t totalPhotos, float difference) override;
    void sessionDidChange(const SessionEvent &event) override;

    void showOnboarding(int step);
    void setCameraKind(CameraKind kind);
    /// Closes an open list first.
    void escapePressed() override;

    [[nodiscard]] bool isRunning() const { return run_->isRunning(); }
    [[nodiscard]] bool isStatusWarning() const { return status_->isWarning(); }
    [[nodiscard]] PreviewLayer *previewLayer() const { return run_->previewLayer(); }
    [[nodiscard]] FocusView *focusView() const { return focusView_.get(); }
    [[nodiscard]] int captureFlashes() const { return captureFlashes_; }
    [[nodiscard]] CaptureManager &captureManager() { return *captureManager_; }

signals:
    void isRunningChanged();
    void isStatusWarningChanged();
    void previewLayerChanged();
    void focusViewChanged();
    void captureFlashesChanged();

private:
    const Services services_;
    PhotoDataManager photoDataManager_;
    LogManager logManager_;
    AutoSave autoSave_;
    const std::shared_ptr<CaptureManager> captureManager_;
    const std::shared_ptr<StatusLine> status_;
    const std::shared_ptr<CameraRun> run_;
    std::vector<NotificationCenter::Observation> observations_;

    std::optional<bool> manualFocus_;
    int onboardingStep_ = 0;
    int captureFlashes_ = 0;
    std::shared_ptr<FocusView> focusView_;
    std::shared_ptr<ViewController> settingsVC_; ///< kept once it has been made

    [[nodiscard]] std::weak_ptr<MainViewController> weakSelf();
    void showPopup(CustomPopupView::Contents contents);

    void registerObservers();
    void checkForForcedUpdate();
    void prepareSettings();
    void toggle(ViewOutlet &container, ViewOutlet &other);

    void setFocusView(std::shared_ptr<FocusView> ring);
};

} // namespace skyflare
