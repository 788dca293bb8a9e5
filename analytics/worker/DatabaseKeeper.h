#pragma once

#include "analytics/worker/LedgerRecord.h"

#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace skyflare {

/// Keeps the measurement database open as well as it can be: opens it on first use, makes it anew where the
/// file has vanished, and tries again later where it could not be opened. Whatever is wrong, the engine goes
/// on without a database, and the ledger tells what became of the rows.
///
/// Threads: the engine's worker. Borrows its Services.
class DatabaseKeeper {
public:
    struct Services {
        APMMonitor &monitor;
        const Clock &clock;
        EventLedger &ledger;
        std::function<Result<std::unique_ptr<APMDatabase>>(const StoreLimits &)> open;
    };

    explicit DatabaseKeeper(Services services, const StoreLimits &limits = {})
        : services_(std::move(services)), limits_(limits)
    {
    }
    /// They hold at once, and for every database to come.
    void setLimits(const StoreLimits &limits);

    /// The database, open; null while there is none. After a failure it is tried again when a minute has
    /// passed, and why it failed is said once. One that is in a transaction stays as it is; otherwise the one
    /// that was given before may be gone.
    APMDatabase *database();

    /// To be told of every error that the database gave: one that was found to be damaged is closed at the
    /// next use, which looks through it and makes it anew.
    void didFail(const Error &error);
    /// To be told that it is whole, but cannot be read: the next use opens it again, which makes tables that
    /// could not be made before.
    void reopen() { isToBeReopened_ = database_ != nullptr; }

    void close() { database_.reset(); }
    [[nodiscard]] bool isOpen() const { return database_ != nullptr; }
    /// How many databases there have been: what is known of an earlier one does not hold for a later one.
    [[nodiscard]] std::uint64_t openings() const { return openings_; }
    LedgerRecord &ledgerRecord() { return ledgerRecord_; }

private:
    Services services_;
    StoreLimits limits_;
    LedgerRecord ledgerRecord_{services_.ledger, services_.monitor};
    std::unique_ptr<APMDatabase> database_;
    std::uint64_t openings_ = 0;
    double nextTry_ = 0; ///< seconds of uptime
    std::string toldWhy_;
    bool isToBeReopened_ = false;
    double lastDamage_ = -std::numeric_limits<double>::infinity(); ///< seconds of uptime

    void closeUnlessSound();
    Result<> open();
};

} // namespace skyflare
