#include "platform/cloud/FIRRemoteConfig.h"

#include <chrono>
#include <utility>

namespace skyflare {

namespace {

constexpr std::size_t maximumAnswerBytes = 65536;
constexpr std::chrono::seconds timeLimit{10};
constexpr std::size_t longestETag = 256;
constexpr int statusOK = 200;
constexpr int statusNotModified = 304;

} // namespace

FIRRemoteConfig::FIRRemoteConfig(Services services)
    : services_(std::move(services)), cache_(services_.cacheFile)
{
}

std::shared_ptr<FIRRemoteConfig> FIRRemoteConfig::make(Services services)
{
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): its constructor is private
    return std::shared_ptr<FIRRemoteConfig>(new FIRRemoteConfig(std::move(services)));
}

void FIRRemoteConfig::configure(std::string url)
{
    {
        const std::scoped_lock lock(mutex_);
        if (std::exchange(configured_, true))
            return;
        last_.url = std::move(url);
        if (!last_.url.empty())
            loadCache();
        if (waiting_.empty())
            return;
    }
    startFetch();
}

// With mutex_ held.
void FIRRemoteConfig::loadCache()
{
    auto kept = cache_.load();
    if (!kept) {
        services_.console.reportLine("The last remote configuration is lost: " + kept.error().message);
        return;
    }
    if (!*kept || (*kept)->url != last_.url)
        return;
    auto values = parseRemoteConfig((*kept)->values);
    if (!values) {
        services_.console.reportLine("The last remote configuration is lost: " + values.error().message);
        return;
    }
    last_ = std::move(**kept);
    values_ = std::move(*values);
    hasAnswer_ = true;
}

void FIRRemoteConfig::setMinimumFetchInterval(double seconds)
{
    const std::scoped_lock lock(mutex_);
    minimumFetchIntervalSeconds_ = seconds;
}

void FIRRemoteConfig::fetchAndActivateWithCompletionHandler(DispatchQueue &queue, Completion completion)
{
    {
        const std::scoped_lock lock(mutex_);
        waiting_.push_back({&queue, std::move(completion)});
        if (!configured_ || request_)
            return;
    }
    startFetch();
}

// With mutex_ held. A clock that was set back makes an answer old, not young.
bool FIRRemoteConfig::isFresh() const
{
    const double age = services_.clock.secondsSince1970() - last_.fetchedAt;
    return hasAnswer_ && age >= 0 && age < minimumFetchIntervalSeconds_;
}

void FIRRemoteConfig::startFetch()
{
    std::vector<Waiting> waiting;
    {
        const std::scoped_lock lock(mutex_);
        if (request_ || waiting_.empty())
            return;
        if (!last_.url.empty() && !isFresh()) {
            request_ = sendRequest();
            return;
        }
        waiting = std::exchange(waiting_, {});
    }
    tell(std::move(waiting), FetchAndActivateStatus::SuccessUsingPreFetchedData);
}

// With mutex_ held.
std::unique_ptr<HttpTask> FIRRemoteConfig::sendRequest()
{
    if (!queue_)
        queue_ = services_.queues.makeSerialQueue("remote config");
    HttpRequest request{.url = last_.url,
                        .headers = {{"Accept", "application/json"}},
                        .maximumAnswerBytes = maximumAnswerBytes,
                        .timeLimit = timeLimit};
    if (!last_.etag.empty())
        request.headers.push_back({"If-None-Match", last_.etag});
    return services_.transport.send(std::move(request), *queue_,
                                    [weak = weak_from_this()](const Result<HttpResponse> &answer) {
                                        if (const auto self = weak.lock())
                                            self->didAnswer(answer);
                                    });
}

void FIRRemoteConfig::didAnswer(const Result<HttpResponse> &answer)
{
    const auto outcome = answer ? activate(*answer) : Result<FetchAndActivateStatus>(answer.error());
    std::vector<Waiting> waiting;
    std::unique_ptr<HttpTask> ended; // ends after the lock
    {
        const std::scoped_lock lock(mutex_);
        waiting = std::exchange(waiting_, {});
        ended = std::move(request_);
    }
    tell(std::move(waiting), outcome);
}

Result<FetchAndActivateStatus> FIRRemoteConfig::activate(const HttpResponse &response)
{
    if (response.status == statusNotModified) {
        const std::scoped_lock lock(mutex_);
        if (!last_.etag.empty()) {
            last_.fetchedAt = services_.clock.secondsSince1970();
            return FetchAndActivateStatus::SuccessUsingPreFetchedData;
        }
    }
    if (response.status != statusOK)
        return Error{"remote configuration", response.status,
                     "the server answers with status " + std::to_string(response.status)};
    auto values =
        parseRemoteConfig({reinterpret_cast<const char *>(response.body.data()), response.body.size()});
    if (!values)
        return values.error();
    const auto etag = response.header("ETag");
    RemoteConfigAnswer answer{.url = address(),
                              .etag = std::string(etag && etag->size() <= longestETag ? *etag : ""),
                              .fetchedAt = services_.clock.secondsSince1970(),
                              .values = {response.body.begin(), response.body.end()}};
    if (const auto stored = cache_.store(answer); !stored && !std::exchange(reportedUnwritable_, true))
        services_.console.reportLine("The remote configuration cannot be kept: " + stored.error().message);
    const std::scoped_lock lock(mutex_);
    last_ = std::move(answer);
    values_ = std::move(*values);
    hasAnswer_ = true;
    return FetchAndActivateStatus::SuccessFetchedFromRemote;
}

std::string FIRRemoteConfig::address() const
{
    const std::scoped_lock lock(mutex_);
    return last_.url;
}

void FIRRemoteConfig::tell(std::vector<Waiting> waiting, const Result<FetchAndActivateStatus> &outcome)
{
    for (Waiting &one : waiting)
        one.queue->async([completion = std::move(one.completion), outcome] { completion(outcome); });
}

FIRRemoteConfigValue FIRRemoteConfig::configValueForKey(std::string_view key) const
{
    const std::scoped_lock lock(mutex_);
    const auto found = values_.find(key);
    return found == values_.end() ? FIRRemoteConfigValue() : found->second;
}

} // namespace skyflare
