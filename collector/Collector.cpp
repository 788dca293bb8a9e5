#include "collector/Collector.h"

#include "analytics/proto/BatchMessage.h"
#include "analytics/store/Gzip.h"
#include "collector/BatchCheck.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace skyflare {

namespace {

constexpr int stored = 200;
constexpr int refused = 400;
constexpr int putOff = 503;
constexpr int ending = 500; // Deliberate: not 503, which keeps an engine away for half a day

constexpr std::size_t linesAtOnce = 1U << 20U;
constexpr double secondsADay = 86400;

Error describe(const Error &error, std::string_view what)
{
    return {error.domain, error.code, std::string(what) + ": " + error.message};
}

} // namespace

Collector::Collector(Services services, Limits limits)
    : services_(std::move(services)), limits_(limits), worker_([this] { serve(); })
{
}

Collector::~Collector()
{
    finish();
}

void Collector::collect(Request request)
{
    std::unique_lock lock(mutex_);
    if (isFinished_) {
        lock.unlock();
        request.answer(ending, "the collector is ending");
        return;
    }
    waiting_.push_back(std::move(request));
    lock.unlock();
    changed_.notify_one();
}

void Collector::countRefusal()
{
    const std::scoped_lock lock(mutex_);
    ++tally_.requests;
    ++tally_.refused;
}

void Collector::reopenFile()
{
    {
        const std::scoped_lock lock(mutex_);
        isToReopen_ = true;
    }
    changed_.notify_one();
}

void Collector::finish()
{
    {
        const std::scoped_lock lock(mutex_);
        isFinished_ = true;
    }
    changed_.notify_one();
    if (worker_.joinable())
        worker_.join();
}

CollectorTally Collector::tally() const
{
    const std::scoped_lock lock(mutex_);
    return tally_;
}

std::string Collector::trouble() const
{
    const std::scoped_lock lock(mutex_);
    return trouble_;
}

void Collector::serve()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isToReopen_ || isFinished_ || !waiting_.empty(); });
        const bool reopensAfter = std::exchange(isToReopen_, false);
        if (!reopensAfter && waiting_.empty())
            return;
        std::vector<Request> requests = std::exchange(waiting_, {});
        lock.unlock();
        if (!requests.empty())
            store(std::move(requests));
        if (reopensAfter)
            reopen();
        lock.lock();
    }
}

void Collector::reopen()
{
    if (const auto reopened = services_.journal->reopen(); !reopened)
        services_.console.reportLine("skyflare-collector: " + reopened.error().message);
}

void Collector::store(std::vector<Request> requests)
{
    std::vector<InHand> group;
    group.reserve(requests.size());
    for (Request &request : requests)
        group.push_back({std::move(request), stored, {}});
    CollectorTally taken;
    const auto done = storeAll(group, taken);
    if (!done)
        putOffAll(group);
    count(group, done ? taken : CollectorTally());
    setTrouble(done);
    for (const InHand &each : group)
        each.request.answer(each.status, each.reason);
}

Result<> Collector::storeAll(std::vector<InHand> &group, CollectorTally &tally)
{
    EventJournal &journal = *services_.journal;
    if (const auto begun = journal.begin(); !begun)
        return begun.error();
    lines_.clear();
    for (InHand &each : group) {
        if (const auto taken = take(each, tally); !taken)
            return taken.error();
        each.request.body = Bytes();
    }
    if (const auto appended = journal.append(lines_); !appended)
        return appended.error();
    const double day = std::floor(services_.clock.secondsSince1970() / secondsADay);
    return journal.commit(static_cast<std::int64_t>(day) - limits_.rememberedDays);
}

/// An error where nothing can be stored; what is no batch is refused and costs the others nothing.
Result<> Collector::take(InHand &each, CollectorTally &tally)
{
    const auto batch = decode(each.request);
    if (!batch) {
        each.status = refused;
        each.reason = batch.error().message;
        return {};
    }
    const Arrival arrival{batch->facts, services_.clock.secondsSince1970()};
    if (const auto acceptable = checkBatch(*batch, arrival); !acceptable) {
        each.status = refused;
        each.reason = acceptable.error().message;
        return {};
    }
    for (const APMMeasurementBundle &bundle : batch->bundles) {
        if (const auto taken = takeBundle(bundle, arrival, tally); !taken)
            return taken.error();
    }
    return {};
}

Result<APMMeasurementBatch> Collector::decode(const Request &request) const
{
    Bytes unpacked;
    std::span<const std::uint8_t> bytes = request.body;
    if (request.packing == Packing::Gzip) {
        auto result = gunzip(bytes, limits_.batchBytes);
        if (!result)
            return describe(result.error(), "no gzip, or longer than is allowed when it is unpacked");
        unpacked = *std::move(result);
        bytes = unpacked;
    }
    if (const auto acceptable = checkCounts(bytes); !acceptable)
        return acceptable.error();
    return BatchMessage::decode(bytes);
}

Result<> Collector::takeBundle(const APMMeasurementBundle &bundle, const Arrival &arrival,
                               CollectorTally &tally)
{
    const auto day = static_cast<std::int64_t>(std::floor(arrival.receivedTimestamp / secondsADay));
    const auto isNew =
        services_.journal->take({bundle.metadata.app.appInstanceId, bundle.databaseId, bundle.index}, day);
    if (!isNew)
        return isNew.error();
    if (!*isNew) {
        ++tally.duplicates;
        return {};
    }
    ++tally.bundles;
    tally.events += bundle.events.size();
    const EventLines bundleLines(bundle, arrival);
    for (std::size_t event = 0; event < bundle.events.size(); ++event) {
        bundleLines.append(lines_, event);
        if (lines_.size() < linesAtOnce)
            continue;
        if (const auto appended = services_.journal->append(lines_); !appended)
            return appended.error();
        lines_.clear();
    }
    return {};
}

void Collector::putOffAll(std::vector<InHand> &group)
{
    for (InHand &each : group) {
        if (each.status != stored)
            continue;
        each.status = putOff;
        each.reason = "the events cannot be stored now";
    }
}

void Collector::count(const std::vector<InHand> &group, const CollectorTally &taken)
{
    const auto answered = [&group](int status) {
        return static_cast<std::uint64_t>(std::ranges::count(group, status, &InHand::status));
    };
    const std::scoped_lock lock(mutex_);
    tally_.requests += group.size();
    tally_.refused += answered(refused);
    tally_.putOff += answered(putOff);
    tally_.bundles += taken.bundles;
    tally_.events += taken.events;
    tally_.duplicates += taken.duplicates;
}

/// Tells of the first failure, and of the end of a trouble.
void Collector::setTrouble(const Result<> &done)
{
    const std::string trouble = done ? std::string() : done.error().description();
    {
        const std::scoped_lock lock(mutex_);
        if (trouble_ == trouble)
            return;
        trouble_ = trouble;
    }
    services_.console.reportLine("skyflare-collector: " +
                                 (done ? "events are stored again" : "nothing can be stored: " + trouble));
}

} // namespace skyflare
