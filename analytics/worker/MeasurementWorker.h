#pragma once

#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/pipeline/WorkerTurns.h"
#include "analytics/worker/AnalyticsReset.h"
#include "analytics/worker/EventIntake.h"
#include "analytics/worker/EventListeners.h"
#include "analytics/worker/FirstOpen.h"
#include "analytics/worker/MeasurementServices.h"
#include "analytics/worker/Sessions.h"
#include "analytics/worker/Uploads.h"
#include "analytics/worker/UserProperties.h"

#include <atomic>
#include <mutex>

namespace skyflare {

/// What the engine does on its worker: leads each event through its stages, and the rest to who knows of it.
///
/// Threads: the engine's worker, but for construction, appInstanceID() and mostUserProperties(). Borrows its
///     services.
class MeasurementWorker {
public:
    /// @param worker  where this runs; not used before start()
    MeasurementWorker(const MeasurementServices &services, WorkerTurns &worker);

    /// @param startedAt  when the program asked for it, before anything that it did since; seconds since 1970
    void start(const APMAnalyticsOptions &options, Collection collection, double startedAt);
    /// Any thread. Nothing until it has started, and where none could be made.
    [[nodiscard]] std::optional<std::string> appInstanceID() const;
    /// Any thread. Of the app's own.
    [[nodiscard]] std::int64_t mostUserProperties() const { return mostUserProperties_; }

    /// One that has its timestamp.
    void logEvent(LogEventCall call);
    void setUserAttribute(UserPropertyCall call);
    void setDefaultEventParameters(std::optional<PropertyList::Dictionary> parameters, Collection collection);
    void setAnalyticsCollectionEnabled(bool choice, Collection collection);
    void setSessionTimeoutInterval(double seconds) { sessions_.setSessionTimeoutInterval(seconds); }
    void resetAnalyticsData(Collection collection);
    /// What the program reports of its activity and its screens.
    void tellSessions(const std::function<void(Sessions &)> &what);
    /// The user is back: what has waited for that.
    void didBecomeActive() { uploads_.didBecomeActive(); }

    Result<std::int64_t> sessionID();
    Result<std::vector<APMUserAttribute>>
    userPropertiesIncludingInternal(IncludingInternal includingInternal);
    EventListeners &listeners() { return listeners_; }

    /// After each of the above.
    void didWork() { journal_.commitIfDue(); }
    /// When no more work waits.
    void didDrain();
    /// Commits, and closes the database.
    void close();

private:
    MeasurementServices services_;
    DatabaseKeeper databases_;
    EventJournal journal_;
    EventListeners listeners_;
    EventIntake intake_;
    EventRecorder recorder_;
    UserProperties properties_;
    FirstOpen firstOpen_;
    AnalyticsReset reset_;
    Sessions sessions_;
    Uploads uploads_;
    std::atomic<std::int64_t> mostUserProperties_;
    bool isDeactivated_ = false;      ///< for good: there is no database then
    bool hasLogged_ = false;          ///< an event, so that there may be a database, and it is not closed
    double nextLookForStaleData_ = 0; ///< seconds of uptime

    mutable std::mutex instanceIDMutex_;
    std::optional<std::string> instanceID_;

    MeasurementWorker(const MeasurementServices &services, WorkerTurns &worker,
                      const MeasurementLimits &limits);
    bool isDropped(const LogEventCall &call);
    void logFirstOpenIfDue(Collection collection, double timestamp);
    void setInstanceID(const Result<std::string> &made);
    void applySettings(const APMRemoteConfig &settings);
    [[nodiscard]] Result<> checkReadable() const;
};

} // namespace skyflare
