#pragma once

#include "platform/base/Clock.h"
#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Result.h"
#include "platform/cloud/FIRRemoteConfigValue.h"
#include "platform/cloud/RemoteConfigCache.h"
#include "platform/net/HttpTransport.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// Where the values come from that a fetch has ended with.
enum class FetchAndActivateStatus {
    SuccessFetchedFromRemote,   ///< new from the server
    SuccessUsingPreFetchedData, ///< those that were there: unchanged, still fresh, or no server is set up
};

/// Values that whoever runs the service can change without a new version of the app: one JSON object, fetched
/// over HTTPS from the address that the deployer has set.
///
/// An answer is taken whole or not at all: only one that is sound takes the place of the last good values,
/// which outlast a bad answer and a restart. Without an address there are no values, every fetch succeeds,
/// and nothing is opened or looked up. A fetch before configure() waits for it.
///
/// Threads: any; the answer is read, and its file written, on a queue of its own. Borrows its Services.
class FIRRemoteConfig : public std::enable_shared_from_this<FIRRemoteConfig> {
public:
    struct Services {
        HttpTransport &transport;
        QueueFactory &queues;
        const Clock &clock;
        Console &console;
        std::filesystem::path cacheFile;
    };
    using Completion = std::function<void(const Result<FetchAndActivateStatus> &)>;

    static std::shared_ptr<FIRRemoteConfig> make(Services services);
    FIRRemoteConfig(const FIRRemoteConfig &) = delete;
    FIRRemoteConfig &operator=(const FIRRemoteConfig &) = delete;
    /// Completions that have not run then never will.
    ~FIRRemoteConfig() = default;

    /// Reads the last good values of that address, and starts the fetch that waited for it. Once.
    /// @param url  empty: there is no server
    void configure(std::string url);

    /// How old the last answer may be before a fetch asks again; 12 hours unless it is set.
    void setMinimumFetchInterval(double seconds);

    /// Fetches the values and puts them in force. Fetches at the same time share one request.
    /// @param queue  where `completion` runs, after the call has returned; must outlive this
    void fetchAndActivateWithCompletionHandler(DispatchQueue &queue, Completion completion);

    /// The value in force.
    [[nodiscard]] FIRRemoteConfigValue configValueForKey(std::string_view key) const;

private:
    struct Waiting {
        DispatchQueue *queue;
        Completion completion;
    };

    const Services services_;
    const RemoteConfigCache cache_;
    std::shared_ptr<SerialQueue> queue_; ///< made with the first request

    mutable std::mutex mutex_;
    bool configured_ = false;
    double minimumFetchIntervalSeconds_ = 43200;
    RemoteConfigAnswer last_; ///< of last_.url, which is the address once configured
    bool hasAnswer_ = false;
    FIRRemoteConfigValues values_;
    std::vector<Waiting> waiting_;
    std::unique_ptr<HttpTask> request_;
    bool reportedUnwritable_ = false; ///< the queue's own

    explicit FIRRemoteConfig(Services services);

    void loadCache();
    [[nodiscard]] bool isFresh() const;
    void startFetch();
    std::unique_ptr<HttpTask> sendRequest();
    void didAnswer(const Result<HttpResponse> &answer);
    Result<FetchAndActivateStatus> activate(const HttpResponse &response);
    [[nodiscard]] std::string address() const;
    static void tell(std::vector<Waiting> waiting, const Result<FetchAndActivateStatus> &outcome);
};

} // namespace skyflare
