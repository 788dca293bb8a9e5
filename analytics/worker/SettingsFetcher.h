#pragma once

#include "analytics/upload/APMRemoteConfig.h"
#include "analytics/upload/SettingsAnswer.h"
#include "analytics/upload/UploadHost.h"
#include "analytics/worker/UploadStore.h"
#include "analytics/worker/WorkerRequest.h"

#include <functional>
#include <optional>

namespace skyflare {

/// Asks the server for the engine's settings when those that are known are too old, and keeps them in the
/// database. Whatever the server says that is no settings changes nothing, and is not asked for again before
/// the time of a retry has passed. It has no timer of its own.
///
/// Threads: the engine's worker. Borrows its Services.
class SettingsFetcher {
public:
    struct Services {
        UploadStore &store;
        WorkerTurns &worker;
        APMMonitor &monitor;
        const Clock &clock;
        HttpTransport *transport; ///< not null once there is a source
        const NetworkMonitor *network;
    };
    struct Hooks {
        std::function<void(const SettingsAnswer &)> accepted; ///< what the server says, now or last time
        std::function<void()> ended;                          ///< a request, whatever has come of it
    };
    struct Source {
        UploadHost host;
        APMAppData app;
    };

    SettingsFetcher(const Services &services, Hooks hooks);

    /// Nothing: nothing is fetched, and a request under way is dropped.
    void setSource(std::optional<Source> source);
    void setSettings(const APMRemoteConfig &settings) { settings_ = settings; }

    // fetchRemoteConfig
    /// If it is due. What was kept the last time holds at once.
    /// @return whether a request is under way now, so that `ended` will run
    bool fetchRemoteConfig();
    /// After a reset: what was kept is gone, and is fetched anew.
    void forget();

private:
    const Services services_;
    const Hooks hooks_;
    APMRemoteConfig settings_;
    std::optional<Source> source_;
    bool isRead_ = false;
    std::optional<double> fetchedAt_; ///< seconds since 1970
    double nextTry_ = 0;              ///< seconds of uptime
    WorkerRequest request_;

    /// Unless it has been read already.
    void readKept();
    [[nodiscard]] bool isFresh() const;
    void cancel();
    void didAnswer(const Result<HttpResponse> &answer);
    Result<> take(const HttpResponse &response);
};

} // namespace skyflare
