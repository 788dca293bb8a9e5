#pragma once

#include "analytics/UnspecifiedFeatures.h"
#include "analytics/model/APMUserAttribute.h"
#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/pipeline/APMOperationQueue.h"
#include "analytics/worker/LogEventCall.h"
#include "analytics/worker/MeasurementServices.h"
#include "analytics/worker/UserProperties.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace skyflare {

class APMMeasurement;
class Sessions;

/// The session's id, or why there is none. Called on the engine's worker; at once where the engine has been
/// closed.
using SessionIDCompletion = std::function<void(const Result<std::int64_t> &)>;
using UserPropertiesCallback = std::function<void(const Result<std::vector<APMUserAttribute>> &)>;

/// The engine's inner face: takes every call on any thread, puts it into the operation queue, which is held
/// back until the engine has started, and hands it on the queue "APMAnalyticsQueue" to APMMeasurement.
///
/// No call waits for anything or touches a file. What is asked is answered unless the engine is closed before
/// its turn comes.
///
/// Threads: any, but for construction, start, close() and destruction, which are main's. Borrows its
/// Services.
///     The work of its queues borrows all of it: it may go once close() has reported in time; where that gave
///     up, only once the queues have been closed too.
class APMAnalytics : public UnspecifiedFeatures {
public:
    using Services = MeasurementServices;

    explicit APMAnalytics(Services services);
    APMAnalytics(const APMAnalytics &) = delete;
    APMAnalytics &operator=(const APMAnalytics &) = delete;
    ~APMAnalytics();

    // startWithConfiguration:options:
    /// Starts the engine, with the origin "fa". What was called before runs now, in order. Once.
    void startWithConfiguration(const APMAnalyticsOptions &options);

    // The public face's operations; FIRAnalytics.h says what they mean.

    void logEventWithName(std::optional<std::string> name, PropertyList::Dictionary parameters);
    void setUserPropertyString(std::optional<PropertyList> value, std::optional<std::string> forName);
    void setUserID(std::optional<PropertyList> userID);
    void setAnalyticsCollectionEnabled(bool enabled);
    void setSessionTimeoutInterval(double seconds);
    void sessionIDWithCompletion(const SessionIDCompletion &completion);
    /// Nothing until the engine has started, and where none could be made.
    [[nodiscard]] std::optional<std::string> appInstanceID() const;
    void resetAnalyticsData();
    void setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters);

    // What the app does, each with the moment of the call. FIRAnalytics.h says what they mean.

    void applicationDidBecomeActive();
    void applicationWillResignActive();
    void viewDidAppear(std::string className, std::uint64_t controllerID);
    // setScreenName:screenClass:
    void setScreenName(std::optional<std::string> name, std::optional<std::string> screenClass);

    // For the engine's own parts and other components.

    void logEventWithOrigin(std::string origin, std::optional<std::string> name,
                            PropertyList::Dictionary parameters);
    void logInternalEventWithOrigin(std::string origin, std::optional<std::string> name,
                                    PropertyList::Dictionary parameters);
    struct EventOptions {
        IsPublicEvent isPublicEvent = IsPublicEvent::Yes;
        std::optional<double> timestamp = {}; ///< seconds since 1970; nothing: when its turn comes
        bool ignoreEnabled = false;           ///< recorded even when collection is off
        bool ignoreInterceptor = false;
    };
    // logEventWithOrigin:isPublicEvent:name:parameters:timestamp:ignoreEnabled:ignoreInterceptor:
    void logEventWithOrigin(std::string origin, std::optional<std::string> name,
                            PropertyList::Dictionary parameters, const EventOptions &options);
    void setInternalUserProperty(std::optional<PropertyList> value, std::optional<std::string> forName,
                                 std::string withOrigin);
    // userPropertiesIncludingInternal:queue:callback:
    /// An error where collection is off and only the public ones are asked for, or there is no database.
    void userPropertiesIncludingInternal(IncludingInternal includingInternal,
                                         std::shared_ptr<DispatchQueue> queue,
                                         UserPropertiesCallback callback);
    /// How many there may be at once. "app" alone has a limit; for any other origin it is the largest number.
    void maxUserPropertiesForOrigin(std::string_view origin, const std::shared_ptr<DispatchQueue> &queue,
                                    std::function<void(std::int64_t)> callback);
    /// An empty one takes it away.
    void setLogEventInterceptor(LogEventInterceptor interceptor);
    LogEventListenerToken addLogEventListener(LogEventListener listener);
    /// It may still hear of events that were logged before.
    void removeLogEventListener(LogEventListenerToken token);
    /// Tells the listeners of an event that is not recorded.
    void notifyEventListeners(const APMEvent &event);

    /// Accepts nothing more; what was accepted is stored and the database closed, and then `closed` runs on
    /// `mainQueue`: after `atMost` in any case, with what is still waiting then left behind and counted so.
    /// Once.
    void close(SerialQueue &mainQueue, std::chrono::nanoseconds atMost, std::function<void()> closed);

private:
    APMMonitor &monitor_;
    const Clock &clock_;
    EventLedger &ledger_;
    APMPersistedSuite &suite_;
    const std::thread::id mainThread_ = std::this_thread::get_id();

    // Used on queue_ alone.
    APMAnalyticsOptions options_;
    Collection collection_ = Collection::Off;
    std::shared_ptr<const LogEventInterceptor> interceptor_;

    // Used on main alone.
    struct Closing;
    std::shared_ptr<Closing> closing_;
    bool isStarted_ = false;

    std::shared_ptr<SerialQueue> queue_;
    APMOperationQueue operations_;
    std::atomic<LogEventListenerToken> lastToken_{0};
    std::unique_ptr<APMMeasurement> measurement_;

    /// False after the end: then it is dropped, for there is nothing left that it could change.
    bool perform(APMOperationQueue::Operation operation);
    void tellSessions(std::function<void(Sessions &)> what);
    void accept(LogEventCall call);
    void setUserProperty(UserPropertyCall call);
    void logOnQueue(LogEventCall call);
    void startOnQueue(const APMAnalyticsOptions &options, double startedAt);
    [[nodiscard]] Collection collectionFor(std::optional<bool> choice) const;
    void giveUp();
};

} // namespace skyflare
