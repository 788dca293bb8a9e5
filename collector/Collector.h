#pragma once

#include "analytics/proto/APMMeasurementBatch.h"
#include "collector/EventJournal.h"
#include "collector/EventLines.h"
#include "platform/base/Bytes.h"
#include "platform/base/Clock.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace skyflare {

/// What a collector has taken since its start.
struct CollectorTally {
    std::uint64_t requests = 0; ///< answered, whatever the answer
    std::uint64_t bundles = 0;  ///< new ones, with their events in the file
    std::uint64_t events = 0;
    std::uint64_t duplicates = 0; ///< bundles that had come before
    std::uint64_t refused = 0;    ///< requests that were nothing to take; they may come again for ever
    std::uint64_t putOff = 0;     ///< requests that could not be stored; they are to come again
};

/// Takes batches and answers each when its events, and that they have been seen, are on the disk. What waits
/// meanwhile goes to the disk together, with one sync.
///
/// Threads: any. Answers are given on the collector's own thread, at once on the caller's when it has
/// finished; they must not wait. Owns the journal, borrows clock and console.
class Collector {
public:
    struct Services {
        const Clock &clock;
        Console &console;
        std::unique_ptr<EventJournal> journal;
    };

    struct Limits {
        std::size_t batchBytes = 12'582'912; ///< of a batch when it is unpacked
        std::int64_t rememberedDays = 92;    ///< for how long a bundle is known again
    };

    enum class Packing { Plain, Gzip };

    struct Request {
        Bytes body;
        Packing packing = Packing::Plain;
        /// Called once with an HTTP status and one line about it.
        std::function<void(int status, const std::string &reason)> answer;
    };

    Collector(Services services, Limits limits);
    Collector(const Collector &) = delete;
    Collector &operator=(const Collector &) = delete;
    ~Collector();

    void collect(Request request);
    /// Counts a request that somebody else has refused.
    void countRefusal();
    /// Goes on in a new file if the old one has been renamed, after what is in hand.
    void reopenFile();
    /// Answers all that has been collected, then takes nothing any more.
    void finish();

    [[nodiscard]] CollectorTally tally() const;
    /// Why nothing can be stored at the moment; empty: it can.
    [[nodiscard]] std::string trouble() const;

private:
    /// A request in hand, and what it will be told.
    struct InHand {
        Request request;
        int status = 0;
        std::string reason;
    };

    Services services_;
    const Limits limits_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Request> waiting_;
    CollectorTally tally_;
    std::string trouble_;
    bool isToReopen_ = false;
    bool isFinished_ = false;
    std::string lines_; ///< the worker's, to be used again
    std::thread worker_;

    void serve();
    void reopen();
    void store(std::vector<Request> requests);
    Result<> storeAll(std::vector<InHand> &group, CollectorTally &tally);
    Result<> take(InHand &each, CollectorTally &tally);
    [[nodiscard]] Result<APMMeasurementBatch> decode(const Request &request) const;
    Result<> takeBundle(const APMMeasurementBundle &bundle, const Arrival &arrival, CollectorTally &tally);
    static void putOffAll(std::vector<InHand> &group);
    void count(const std::vector<InHand> &group, const CollectorTally &taken);
    void setTrouble(const Result<> &done);
};

} // namespace skyflare
