#include "collector/SeenBundles.h"

namespace skyflare {

namespace {

constexpr auto tableSql = "CREATE TABLE IF NOT EXISTS seen ("
                          "app_instance_id TEXT NOT NULL, database_id TEXT NOT NULL, "
                          "first INTEGER NOT NULL, last INTEGER NOT NULL, day INTEGER NOT NULL, "
                          "PRIMARY KEY (app_instance_id, database_id, first)) WITHOUT ROWID;"
                          "CREATE INDEX IF NOT EXISTS seen_day ON seen (day)";

constexpr std::string_view rangeSql = "SELECT first, last, day FROM seen WHERE app_instance_id = ? AND "
                                      "database_id = ? AND first <= ? ORDER BY first DESC LIMIT 1";
constexpr std::string_view takeSql =
    "DELETE FROM seen WHERE app_instance_id = ? AND database_id = ? AND first = ? + 1 RETURNING last";
constexpr std::string_view putSql =
    "INSERT INTO seen (app_instance_id, database_id, first, last, day) VALUES (?, ?, ?, ?, ?) "
    "ON CONFLICT DO UPDATE SET last = excluded.last, day = excluded.day";
constexpr std::string_view forgetSql =
    "DELETE FROM seen WHERE (app_instance_id, database_id, first) IN "
    "(SELECT app_instance_id, database_id, first FROM seen WHERE day < ? LIMIT 500)";

/// A statement whose first three values are a bundle's name and an index.
Result<Statement> statementOn(Database &database, std::string_view sql, const BundleName &name,
                              std::int64_t index)
{
    auto statement = database.prepare(sql);
    if (!statement)
        return statement;
    if (const auto bound = statement->bind(1, std::string_view(name.appInstanceId)); !bound)
        return bound.error();
    if (const auto bound = statement->bind(2, std::string_view(name.databaseId)); !bound)
        return bound.error();
    if (const auto bound = statement->bind(3, index); !bound)
        return bound.error();
    return statement;
}

} // namespace

Result<> SeenBundles::prepare()
{
    return database_.execute(tableSql);
}

Result<SeenBundles::Range> SeenBundles::rangeBefore(const BundleName &name)
{
    auto statement = statementOn(database_, rangeSql, name, name.index);
    if (!statement)
        return statement.error();
    const auto row = statement->step();
    if (!row)
        return row.error();
    if (!*row)
        return Range{.first = 0, .last = -1};
    return Range{statement->integer(0).value_or(0), statement->integer(1).value_or(0),
                 statement->integer(2).value_or(0)};
}

Result<std::int64_t> SeenBundles::takeRangeBehind(const BundleName &name)
{
    auto statement = statementOn(database_, takeSql, name, name.index);
    if (!statement)
        return statement.error();
    std::int64_t last = name.index;
    for (;;) { // to its end: only then is the row gone
        const auto row = statement->step();
        if (!row)
            return row.error();
        if (!*row)
            return last;
        last = statement->integer(0).value_or(last);
    }
}

Result<> SeenBundles::put(const BundleName &name, const Range &range)
{
    auto statement = statementOn(database_, putSql, name, range.first);
    if (!statement)
        return statement.error();
    if (const auto bound = statement->bind(4, range.last); !bound)
        return bound.error();
    if (const auto bound = statement->bind(5, range.day); !bound)
        return bound.error();
    const auto done = statement->step();
    return done ? Result<>() : done.error();
}

Result<bool> SeenBundles::add(const BundleName &name, std::int64_t day)
{
    const auto before = rangeBefore(name);
    if (!before)
        return before.error();
    const bool isSeen = before->last >= name.index;
    if (isSeen && before->day == day)
        return false;
    Range range{name.index, name.index, day};
    if (isSeen) {
        range.last = before->last;
    } else {
        const auto behind = takeRangeBehind(name);
        if (!behind)
            return behind.error();
        range.last = *behind;
    }
    if (isSeen || before->last == name.index - 1)
        range.first = before->first;
    if (const auto stored = put(name, range); !stored)
        return stored.error();
    return !isSeen;
}

Result<> SeenBundles::forgetBefore(std::int64_t day)
{
    auto statement = database_.prepare(forgetSql);
    if (!statement)
        return statement.error();
    if (const auto bound = statement->bind(1, day); !bound)
        return bound.error();
    const auto done = statement->step();
    return done ? Result<>() : done.error();
}

} // namespace skyflare
