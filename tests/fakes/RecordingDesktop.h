#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/CameraAuthorization.h"
#include "platform/desktop/HapticFeedback.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/desktop/PhotoLibrary.h"
#include "platform/desktop/RemoteNotifications.h"
#include "platform/desktop/StoreReview.h"
#include "platform/desktop/URLOpener.h"
#include "platform/desktop/UserNotificationCenter.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace skyflare {

/// The desktop's services for a test: each keeps what it was asked, and answers when the test says so.
///
/// Threads: the test's.
struct RecordingNotifications final : UserNotificationCenter {
    UserNotificationCenterDelegate *delegate = nullptr;
    std::vector<UNAuthorizationOptions> asked;
    std::vector<Authorization> waiting; ///< for the user's answer, one for each time asked
    std::vector<UserNotification> shown;

    void setDelegate(UserNotificationCenterDelegate *wanted) override { delegate = wanted; }
    void requestAuthorizationWithOptions(UNAuthorizationOptions options, Authorization completion) override
    {
        asked.push_back(options);
        waiting.push_back(std::move(completion));
    }
    void addNotificationRequest(const UserNotification &notification,
                                std::function<void(const Result<> &)> /*completion*/) override
    {
        shown.push_back(notification);
    }
};

struct RecordingRemoteNotifications final : RemoteNotifications {
    std::vector<std::function<void(const Result<Bytes> &)>> waiting; ///< for a token, one for each time asked

    void registerForRemoteNotifications(std::function<void(const Result<Bytes> &)> didRegister) override
    {
        waiting.push_back(std::move(didRegister));
    }
};

struct RecordingHaptics final : HapticFeedback {
    std::vector<ImpactFeedbackStyle> impacts;

    void impactOccurred(ImpactFeedbackStyle style) override { impacts.push_back(style); }
};

struct RecordingIdleInhibitor final : IdleInhibitor {
    std::vector<std::string> reasons;
    std::weak_ptr<const void> newest; ///< expired: the screen may go dark

    [[nodiscard]] Inhibition inhibit(const std::string &reason) override
    {
        reasons.push_back(reason);
        const auto given = std::make_shared<int>();
        newest = given;
        return given;
    }
};

struct RecordingStoreReview final : StoreReview {
    int requests = 0;

    void requestReview() override { ++requests; }
};

struct RecordingURLOpener final : URLOpener {
    std::vector<std::string> opened;
    bool opensNothing = false;

    [[nodiscard]] bool canOpenURL(const std::string &url) override
    {
        return !opensNothing && isOpenableURL(url);
    }
    void openURL(const std::string &url) override { opened.push_back(url); }
};

struct FakeCameraAuthorization final : CameraAuthorization {
    CameraAuthorizationStatus status = CameraAuthorizationStatus::Authorized;
    std::vector<std::function<void(bool)>> waiting; ///< for the user's answer, one for each time asked

    [[nodiscard]] CameraAuthorizationStatus authorizationStatus() override { return status; }
    void requestAccess(std::function<void(bool)> completion) override
    {
        waiting.push_back(std::move(completion));
    }
};

/// Answers when the test says so.
struct FakePhotoLibrary final : PhotoLibrary {
    std::vector<std::function<void(AuthorizationStatus)>> asked;
    std::vector<double> assetDates;
    LibraryChange change{true, std::nullopt};

    void requestAuthorization(std::function<void(AuthorizationStatus)> completion) override
    {
        asked.push_back(std::move(completion));
    }
    void createAsset(const Image & /*image*/, double creationDate,
                     std::function<void(const LibraryChange &)> completion) override
    {
        assetDates.push_back(creationDate);
        completion(change);
    }
};

} // namespace skyflare
