#include "platform/sqlite/Transaction.h"

namespace skyflare {

namespace {

Result<> run(Database &database, std::string_view sql)
{
    auto statement = database.prepare(sql);
    if (!statement)
        return statement.error();
    if (const auto stepped = statement->step(); !stepped)
        return stepped.error();
    return {};
}

constexpr std::string_view beginningOf(Transaction::Kind kind)
{
    switch (kind) {
    case Transaction::Kind::Read:
        return "BEGIN";
    case Transaction::Kind::Write:
        return "BEGIN IMMEDIATE";
    case Transaction::Kind::Exclusive:
        return "BEGIN EXCLUSIVE TRANSACTION";
    }
    return {};
}

} // namespace

Result<Transaction> Transaction::begin(Database &database, Kind kind)
{
    if (const auto begun = run(database, beginningOf(kind)); !begun)
        return begun.error();
    return Transaction(database);
}

Transaction::~Transaction()
{
    // A full disk and the like have rolled back already; what a roll-back itself says changes nothing.
    if (database_ && database_->isInTransaction())
        static_cast<void>(run(*database_, "ROLLBACK"));
}

Result<> Transaction::commit()
{
    if (const auto committed = run(*database_, "END TRANSACTION"); !committed)
        return committed.error();
    database_ = nullptr;
    return {};
}

Result<> Transaction::rollback()
{
    Database *const database = std::exchange(database_, nullptr);
    return database && database->isInTransaction() ? run(*database, "ROLLBACK") : Result<>();
}

} // namespace skyflare
