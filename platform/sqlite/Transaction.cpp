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

} // namespace

Result<Transaction> Transaction::begin(Database &database, Kind kind)
{
    if (const auto begun = run(database, kind == Kind::Write ? "BEGIN IMMEDIATE" : "BEGIN"); !begun)
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
    if (const auto committed = run(*database_, "COMMIT"); !committed)
        return committed.error();
    database_ = nullptr;
    return {};
}

} // namespace skyflare
