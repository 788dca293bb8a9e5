#pragma once

#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/worker/LogEventCall.h"
#include "analytics/worker/Uploader.h"

#include <functional>
#include <optional>
#include <string>

namespace skyflare {

/// All that goes over the network, as the rest of the worker sees it: says whether anything does, and brings
/// uploads and settings together.
///
/// Without transport and app id, and while collection is off, no server is asked. Without a collection host
/// nothing is asked of the database and no timer set; without a configuration host the settings stay as they
/// are.
///
/// Threads: the engine's worker. Borrows its Services.
class Uploads {
public:
    struct Services {
        EventJournal &journal;
        DatabaseKeeper &databases;
        APMMonitor &monitor;
        const Clock &clock;
        RandomSource &random;
        UserDefaults &defaults; ///< of the engine's configuration
        WorkerTurns &worker;
        HttpTransport *transport; ///< may be null
        NetworkMonitor *network;  ///< may be null
        bool isDebug = false;
        APMRemoteConfig settings;                                   ///< until a server gives others
        std::function<void(const APMRemoteConfig &)> applySettings; ///< others hold from now on
    };

    explicit Uploads(Services services);

    void start(const APMAnalyticsOptions &options, const APMAppData &app, Collection collection);
    void setCollection(Collection collection);
    void didStoreEvent() { isScheduleOld_ = true; }
    void didBecomeActive() { lookAnew(); }
    /// The database has been wiped.
    void didReset();
    /// When no more work waits, and what was stored is committed.
    void didDrain();
    void close();

private:
    const Services services_;
    UploadStore store_;
    UploadRecord record_;
    SettingsFetcher fetcher_;
    Uploader uploader_;
    std::optional<Uploader::Destination> destination_;
    std::optional<SettingsFetcher::Source> source_;
    bool isOn_ = false;
    bool isScheduleOld_ = false;

    void lookAnew();
    void accept(const SettingsAnswer &answer);
};

} // namespace skyflare
