#pragma once

#include "platform/sqlite/Database.h"

#include <utility>

namespace skyflare {

/// Statements that hold together. Rolls back unless commit() ran.
///
/// Threads: that of its database's user. Its database must outlive it.
class Transaction {
public:
    enum class Kind {
        Read,      ///< all statements see the same moment
        Write,     ///< waits for other writers, as long as the connection's busy time-out allows
        Exclusive, ///< the same; without a log, it keeps readers out as well
    };

    static Result<Transaction> begin(Database &database, Kind kind);
    Transaction(Transaction &&other) noexcept : database_(std::exchange(other.database_, nullptr)) {}
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    Transaction &operator=(Transaction &&) = delete;
    ~Transaction();

    Result<> commit();
    /// For who wants to know whether it worked. It did, too, where SQLite had rolled back by itself.
    Result<> rollback();

private:
    Database *database_;
    explicit Transaction(Database &database) : database_(&database) {}
};

} // namespace skyflare
