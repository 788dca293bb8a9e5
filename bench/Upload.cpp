// How fast a backlog of events goes to a collector on this machine: debug mode, batches of 1 MiB.
//
// Upload time begins when the engine's first pass does, which asks for the settings, and ends with the answer
// to the last batch. All that the engine and the collector do in between counts: making bundles, packing,
// sending, syncing, deleting what has arrived. No wait by the schedule lies in it: in debug mode what is old
// goes at once. The collector is a process of its own on the last core.

#include "analytics/AnalyticsHost.h"
#include "bench/CollectorProcess.h"
#include "bench/Machine.h"
#include "bench/StrictConsole.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/base/AsioQueues.h"
#include "platform/linux/BackgroundThread.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/net/CurlTransport.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace skyflare::bench {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t backlog = 100'000;

/// Counts, takes the time, and keeps the requests for the yardstick.
class WatchedTransport final : public HttpTransport {
public:
    [[nodiscard]] std::unique_ptr<HttpTask> send(HttpRequest request, DispatchQueue &queue,
                                                 Completion completion) override
    {
        const std::scoped_lock lock(mutex_);
        if (begun_ == 0)
            begun_ = now();
        const bool isUpload = request.method == HttpRequest::Method::Post;
        if (isUpload) {
            uploads_.push_back(request);
            mostUnderWay_ = std::max(mostUnderWay_, ++underWay_);
        }
        return transport_.send(
            std::move(request), queue,
            [this, isUpload, completion = std::move(completion)](const Result<HttpResponse> &response) {
                require(response && response->status == 200, "the collector did not take a request");
                {
                    const std::scoped_lock answered(mutex_);
                    underWay_ -= isUpload ? 1 : 0;
                    ended_ = now();
                }
                completion(response);
            });
    }

    // When nothing is under way any more.

    [[nodiscard]] double seconds() const { return ended_ - begun_; }
    [[nodiscard]] int mostUnderWay() const { return mostUnderWay_; }
    [[nodiscard]] std::vector<HttpRequest> takeUploads() { return std::move(uploads_); }

private:
    std::mutex mutex_;
    double begun_ = 0;
    double ended_ = 0;
    int underWay_ = 0;
    int mostUnderWay_ = 0;
    std::vector<HttpRequest> uploads_;
    CurlTransport transport_; ///< last: its thread uses the rest
};

std::string hostAt(int port)
{
    return "http://127.0.0.1:" + std::to_string(port);
}

class Engine {
public:
    Engine(const std::filesystem::path &folder, HttpTransport *transport, LaunchSwitches switches)
        : host_({.queues = queues_,
                 .clock = clock_,
                 .console = console_,
                 .random = random_,
                 .excludeFromBackup = {},
                 .prepareThread = &becomeBackgroundThread,
                 .settings = APMRemoteConfig(
                     {{"measurement.upload.max_events_per_day", std::int64_t{1'000'000}},
                      {"measurement.upload.max_public_events_per_day", std::int64_t{1'000'000}}}),
                 .transport = transport},
                {.config = folder, .state = folder, .deployment = {}}, switches, {})
    {
    }
    ~Engine()
    {
        std::promise<void> closed;
        host_.close(*main_, [&closed] { closed.set_value(); });
        closed.get_future().wait();
        queues_.close();
    }
    /// @param collector  its host; empty: nothing is sent
    void start(const std::string &collector)
    {
        APMAnalyticsOptions options;
        options.appID = "1:2:linux:3";
        options.collectionHost = collector;
        options.configurationHost = collector;
        host_.analytics().startWithConfiguration(options);
    }
    /// As the app logs a photo.
    void log(std::uint64_t count)
    {
        for (std::uint64_t number = 0; number < count; ++number)
            host_.analytics().logEventWithName("catch_photo",
                                               {{"light_power", 0.4375},
                                                {"sensitivity", std::string("Ultra High")},
                                                {"frequency", std::int64_t{5}},
                                                {"timestamp", std::string("2023-11-14 22:13:20.000")},
                                                {"number", static_cast<std::int64_t>(number)}});
    }
    void waitUntil(LedgerEntry entry, std::uint64_t count) const
    {
        while (host_.ledger().tally().count(entry) < count)
            std::this_thread::sleep_for(1ms);
    }

private:
    StrictConsole console_;
    SystemClock clock_;
    SystemRandom random_;
    AsioQueues queues_;
    std::shared_ptr<SerialQueue> main_ = queues_.makeSerialQueue("main");
    AnalyticsHost host_;
};

/// In a process of its own, whose memory is no part of what is measured.
void fill(const std::filesystem::path &folder)
{
    const pid_t child = fork();
    if (child == 0) {
        {
            Engine engine(folder, nullptr, {});
            engine.start("");
            engine.log(backlog - 1); // the first one of all comes by itself
            engine.waitUntil(LedgerEntry::Stored, backlog);
        }
        _exit(EXIT_SUCCESS);
    }
    int status = 1;
    require(waitpid(child, &status, 0) == child && status == 0, "there is no backlog");
}

struct Drain {
    double seconds = 0;
    std::uint64_t memory = 0; ///< the most over that of the idle engine
    int mostUnderWay = 0;
    std::vector<HttpRequest> uploads;
};

Drain drain()
{
    const WorkFolder folder;
    fill(folder.path());
    const WorkFolder collectorFolder;
    CollectorProcess collector(collectorFolder.path(), R"({"measurement.upload.max_batch_size": 1048576})");
    Drain drain;
    WatchedTransport transport;
    {
        Engine engine(folder.path(), &transport, {.debugMode = true, .verboseLogging = {}});
        const std::uint64_t idle = currentMemory();
        forgetPeak();
        engine.start(hostAt(collector.port()));
        engine.waitUntil(LedgerEntry::Uploaded, backlog);
        drain.memory = peakMemory() - idle;
    }
    drain.seconds = transport.seconds();
    drain.mostUnderWay = transport.mostUnderWay();
    drain.uploads = transport.takeUploads();
    std::fprintf(stderr, "%s\n", collector.terminate().c_str());
    return drain;
}

/// The yardstick: the same requests, one after the other, without an engine.
double secondsOfBare(const std::vector<HttpRequest> &uploads)
{
    const WorkFolder folder;
    CollectorProcess collector(folder.path());
    AsioQueues queues;
    const auto queue = queues.makeSerialQueue("answers");
    const double start = now();
    {
        CurlTransport transport;
        for (HttpRequest request : uploads) {
            request.url = hostAt(collector.port()) + "/a";
            std::promise<void> answered;
            const auto task = transport.send(std::move(request), *queue, [&](const auto &response) {
                require(response && response->status == 200, "the collector did not take a request");
                answered.set_value();
            });
            answered.get_future().wait();
        }
    }
    const double seconds = now() - start;
    queues.close();
    std::fprintf(stderr, "%s\n", collector.terminate().c_str());
    return seconds;
}

std::string eventsText(double seconds)
{
    return std::to_string(static_cast<long>(double(backlog) / seconds / 1000) * 1000) + " events/s";
}

int run()
{
    const Drain measured = drain();
    const double bare = secondsOfBare(measured.uploads);
    Table table("Uploading");
    table.add({"a backlog of 100,000 events to the collector, " + std::to_string(measured.uploads.size()) +
                   " batches",
               eventsText(measured.seconds), "posting the same batches bare: " + eventsText(bare),
               ratio(bare / measured.seconds), ">= 50000 events/s",
               double(backlog) / measured.seconds >= 50'000});
    table.add({"most memory over the idle engine", megabytes(measured.memory), "", "", "<= 64 MB",
               measured.memory <= 64'000'000});
    table.add({"most requests in flight", std::to_string(measured.mostUnderWay), "", "", "1",
               measured.mostUnderWay == 1});
    table.print();
    return EXIT_SUCCESS;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
