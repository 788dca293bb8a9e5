#include "analytics/FIRAnalytics.h"

#include <atomic>
#include <utility>

namespace skyflare {

namespace {

std::atomic<APMAnalytics *> sharedAnalytics{nullptr};

/// Hands a call on, if there is anybody to take it.
template <typename Call> void forward(const Call &call)
{
    if (APMAnalytics *analytics = sharedAnalytics.load(std::memory_order_acquire))
        call(*analytics);
}

} // namespace

void FIRAnalytics::setShared(APMAnalytics *analytics)
{
    sharedAnalytics.store(analytics, std::memory_order_release);
}

void FIRAnalytics::startWithConfiguration(const APMAnalyticsOptions &options)
{
    forward([&](APMAnalytics &analytics) { analytics.startWithConfiguration(options); });
}

void FIRAnalytics::logEventWithName(std::optional<std::string> name, PropertyList::Dictionary parameters)
{
    forward(
        [&](APMAnalytics &analytics) { analytics.logEventWithName(std::move(name), std::move(parameters)); });
}

void FIRAnalytics::setUserPropertyString(std::optional<PropertyList> value,
                                         std::optional<std::string> forName)
{
    forward([&](APMAnalytics &analytics) {
        analytics.setUserPropertyString(std::move(value), std::move(forName));
    });
}

void FIRAnalytics::setUserID(std::optional<PropertyList> userID)
{
    forward([&](APMAnalytics &analytics) { analytics.setUserID(std::move(userID)); });
}

void FIRAnalytics::setAnalyticsCollectionEnabled(bool enabled)
{
    forward([&](APMAnalytics &analytics) { analytics.setAnalyticsCollectionEnabled(enabled); });
}

void FIRAnalytics::setSessionTimeoutInterval(double seconds)
{
    forward([&](APMAnalytics &analytics) { analytics.setSessionTimeoutInterval(seconds); });
}

void FIRAnalytics::sessionIDWithCompletion(const SessionIDCompletion &completion)
{
    forward([&](APMAnalytics &analytics) { analytics.sessionIDWithCompletion(completion); });
}

std::optional<std::string> FIRAnalytics::appInstanceID()
{
    std::optional<std::string> id;
    forward([&](const APMAnalytics &analytics) { id = analytics.appInstanceID(); });
    return id;
}

void FIRAnalytics::resetAnalyticsData()
{
    forward([](APMAnalytics &analytics) { analytics.resetAnalyticsData(); });
}

void FIRAnalytics::setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters)
{
    forward([&](APMAnalytics &analytics) { analytics.setDefaultEventParameters(std::move(parameters)); });
}

void FIRAnalytics::applicationDidBecomeActive()
{
    forward([](APMAnalytics &analytics) { analytics.applicationDidBecomeActive(); });
}

void FIRAnalytics::applicationWillResignActive()
{
    forward([](APMAnalytics &analytics) { analytics.applicationWillResignActive(); });
}

void FIRAnalytics::viewDidAppear(std::string className, std::uint64_t controllerID)
{
    forward([&](APMAnalytics &analytics) { analytics.viewDidAppear(std::move(className), controllerID); });
}

void FIRAnalytics::setScreenName(std::optional<std::string> name, std::optional<std::string> screenClass)
{
    forward(
        [&](APMAnalytics &analytics) { analytics.setScreenName(std::move(name), std::move(screenClass)); });
}

void FIRAnalytics::setConsent(const ConsentSettings &consent)
{
    forward([&](APMAnalytics &analytics) { analytics.setConsent(consent); });
}

void FIRAnalytics::handleOpenURL(const std::string &url)
{
    APMAnalytics::handleOpenURL(url);
}

void FIRAnalytics::handleUserActivity(const std::string &webpageURL)
{
    APMAnalytics::handleUserActivity(webpageURL);
}

void FIRAnalytics::handleEventsForBackgroundURLSession(const std::string &identifier,
                                                       const std::function<void()> &completionHandler)
{
    APMAnalytics::handleEventsForBackgroundURLSession(identifier, completionHandler);
}

void FIRAnalytics::logTransactionWithProductID(const std::string &productID)
{
    APMAnalytics::logTransactionWithProductID(productID);
}

void FIRAnalytics::initiateOnDeviceConversionMeasurementWithEmailAddress(const std::string &emailAddress)
{
    APMAnalytics::initiateOnDeviceConversionMeasurementWithEmailAddress(emailAddress);
}

void FIRAnalytics::initiateOnDeviceConversionMeasurementWithPhoneNumber(const std::string &phoneNumber)
{
    APMAnalytics::initiateOnDeviceConversionMeasurementWithPhoneNumber(phoneNumber);
}

void FIRAnalytics::initiateOnDeviceConversionMeasurementWithHashedEmailAddress(const Bytes &hash)
{
    APMAnalytics::initiateOnDeviceConversionMeasurementWithHashedEmailAddress(hash);
}

void FIRAnalytics::initiateOnDeviceConversionMeasurementWithHashedPhoneNumber(const Bytes &hash)
{
    APMAnalytics::initiateOnDeviceConversionMeasurementWithHashedPhoneNumber(hash);
}

} // namespace skyflare
