#pragma once

#include "analytics/APMAnalytics.h"

namespace skyflare {

/// The measurement engine's public face: functions of the class alone, which hand each call on to the
/// process's APMAnalytics. Without one they do nothing.
///
/// Nothing is answered: what is refused is logged, and dropped.
/// Threads: any; nothing here waits or touches a file.
class FIRAnalytics {
public:
    /// Before any other thread logs; null takes it away again, once none does any more. Borrowed.
    static void setShared(APMAnalytics *analytics);

    // startWithConfiguration:options:
    /// Starts the engine. What was called before runs now, in order. Once, on main.
    static void startWithConfiguration(const APMAnalyticsOptions &options);

    /// An event of the app's own. What is wrong with a parameter takes that parameter away, not the event.
    static void logEventWithName(std::optional<std::string> name, PropertyList::Dictionary parameters = {});

    // setUserPropertyString:forName:
    /// A property of the user, recorded with every later event; nothing takes it away.
    static void setUserPropertyString(std::optional<PropertyList> value, std::optional<std::string> forName);
    static void setUserID(std::optional<PropertyList> userID);

    /// Whether events are recorded. Persisted; holds from the next call on.
    static void setAnalyticsCollectionEnabled(bool enabled);
    /// After how long without activity a new session begins, in seconds. Persisted.
    static void setSessionTimeoutInterval(double seconds);
    /// Without an engine `completion` is never called.
    static void sessionIDWithCompletion(const SessionIDCompletion &completion);
    [[nodiscard]] static std::optional<std::string> appInstanceID();
    /// Wipes what is stored, and gives the installation a new id.
    static void resetAnalyticsData();

    /// Parameters of every later event, unless that has its own of the same name, in place of those set
    /// before; nothing clears them. They are not persisted.
    static void setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters);

    // What the app does, so that the engine knows of sessions and screens. On main.

    /// The user sees the app and may use it, or is about to no longer. It counts as inactive until told, and
    /// should be told of its end as well.
    static void applicationDidBecomeActive();
    static void applicationWillResignActive();
    /// A screen is shown by its controller, unless the deployer switched off that screens are reported.
    /// @param className  of the controller: "MainViewController"
    /// @param controllerID  the same as long as the controller lives
    static void viewDidAppear(std::string className, std::uint64_t controllerID);
    // setScreenName:screenClass:
    /// Names the screen that is shown until another one appears. Without a class the controller's holds;
    /// without a name there is none.
    static void setScreenName(std::optional<std::string> name, std::optional<std::string> screenClass);

    // What follows does nothing yet: UnspecifiedFeatures.h says what is left of each.

    static void setConsent(const ConsentSettings &consent);
    static void handleOpenURL(const std::string &url);
    static void handleUserActivity(const std::string &webpageURL);
    static void handleEventsForBackgroundURLSession(const std::string &identifier,
                                                    const std::function<void()> &completionHandler);
    static void logTransactionWithProductID(const std::string &productID);
    static void initiateOnDeviceConversionMeasurementWithEmailAddress(const std::string &emailAddress);
    static void initiateOnDeviceConversionMeasurementWithPhoneNumber(const std::string &phoneNumber);
    static void initiateOnDeviceConversionMeasurementWithHashedEmailAddress(const Bytes &hash);
    static void initiateOnDeviceConversionMeasurementWithHashedPhoneNumber(const Bytes &hash);
};

} // namespace skyflare
