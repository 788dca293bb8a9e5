#pragma once

#include "analytics/pipeline/Alarm.h"
#include "analytics/upload/UploadRecord.h"
#include "analytics/worker/SettingsFetcher.h"

#include <cstdint>
#include <optional>
#include <string>

namespace skyflare {

/// Sends what is waiting to the collecting server when it is time, and sets an alarm when it is not yet.
///
/// When it is time a pass begins: the settings are fetched if they are too old, then events become bundles,
/// one bundle a turn of the worker, and then the oldest bundles are sent, in one request. Its answer ends the
/// pass; whether the next one begins at once is for the schedule to say. A pass that comes to no request is
/// not repeated before the time of a retry has passed.
///
/// Threads: the engine's worker. Borrows its Services.
class Uploader {
public:
    struct Services {
        UploadStore &store;
        UploadRecord &record;
        SettingsFetcher &fetcher;
        WorkerTurns &worker;
        APMMonitor &monitor;
        const Clock &clock;
        HttpTransport *transport; ///< not null once there is a destination
        const NetworkMonitor *network;
        bool isDebug;
    };
    struct Destination {
        UploadHost host;
        std::string appID;
    };

    explicit Uploader(const Services &services);

    /// Nothing: nothing is sent, asked for or set, and a request under way is dropped and forgotten.
    void setDestination(std::optional<Destination> destination);
    /// @param subdomain  of the destination; may be empty
    void setSettings(const APMRemoteConfig &settings, std::string subdomain);
    /// What is under way is dropped and forgotten: the bundles that it is about may be others by now.
    void stop();

    /// Sets the alarm, unless it is set; see UploadLog.h for why not.
    void updateSchedule();
    /// Goes on with a pass that has waited for them.
    void settingsFetchDidEnd();

private:
    /// From the decision to upload to the answer.
    struct Pass {
        bool isWaitingForSettings = false;
        std::int64_t bundlesMade = 0;
        std::string trouble = {}; ///< why there are not more bundles
    };
    /// A pass came to nothing.
    struct HoldOff {
        double until = 0;                      ///< seconds of uptime
        std::optional<WaitingData> about = {}; ///< with anything else waiting it does not hold
    };

    const Services services_;
    APMRemoteConfig settings_;
    std::string subdomain_;
    std::optional<Destination> destination_;
    Alarm alarm_;
    std::optional<Pass> pass_;
    std::uint64_t passNumber_ = 0; ///< a turn that an earlier one has asked for does nothing
    std::optional<HoldOff> holdOff_;
    WorkerRequest request_;
    std::optional<BundleBatch> inProgress_; ///< what the request is about

    void uploadDataOrRegisterAlarm();
    [[nodiscard]] bool isHeldBack();
    [[nodiscard]] std::optional<double> nextDue();
    [[nodiscard]] UploadState stateWith(const WaitingData &waiting) const;

    void beginPass();
    void bundleInNextTurn();
    void bundleRawEvents();
    void uploadData();
    void send(BundleBatch batch);
    void comeToNothing(const std::string &trouble);

    void networkUploadCompletionHandlerWithResponse(const Result<HttpResponse> &response);
    void didSucceed(const HttpResponse &response, const BundleBatch &batch);
    void didFail(const Result<HttpResponse> &response, const BundleBatch &batch);
};

} // namespace skyflare
