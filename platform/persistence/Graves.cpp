#include "platform/persistence/Graves.h"

namespace skyflare {

namespace {

std::string gravePrefix(const EntityTable &table)
{
    return "Deleted_" + table.name() + '_';
}

} // namespace

Result<> bury(Database &database, const EntityTable &table, const std::string &mark)
{
    const auto any = database.number("SELECT 1 FROM " + table.name() + " LIMIT 1");
    if (!any)
        return any.error();
    if (*any == 0)
        return {};
    const auto last = database.number("SELECT seq FROM sqlite_sequence WHERE name = '" + table.name() + '\'');
    if (!last)
        return last.error();
    const std::string highest = std::to_string(*last); // grows before every burial, so names differ
    return database.execute(table.dropIndexesSql() + "ALTER TABLE " + table.name() + " RENAME TO " +
                            gravePrefix(table) + highest + '_' + mark + ';' + table.createSql() +
                            "INSERT INTO sqlite_sequence(name, seq) VALUES('" + table.name() + "', " +
                            highest + ");");
}

Result<std::vector<std::string>> graves(Database &database)
{
    auto statement = database.prepare("SELECT name FROM sqlite_schema WHERE type = 'table' AND name GLOB "
                                      "'Deleted_*' ORDER BY rowid");
    if (!statement)
        return statement.error();
    std::vector<std::string> names;
    while (true) {
        const auto row = statement->step();
        if (!row)
            return row.error();
        if (!*row)
            return names;
        if (auto name = statement->text(0))
            names.push_back(std::move(*name));
    }
}

bool isGraveOf(const EntityTable &table, const std::string &grave)
{
    return grave.starts_with(gravePrefix(table));
}

bool isMarked(const std::string &grave, const std::string &mark)
{
    return grave.ends_with('_' + mark);
}

Result<RowBlob> openRow(Database &database, const EntityTable &table, const std::string &column,
                        std::int64_t row)
{
    auto found = RowBlob::open(database, table.name(), column, row);
    if (found || isBusy(found.error()))
        return found;
    const auto buried = graves(database);
    if (!buried)
        return buried.error();
    for (const std::string &grave : *buried) {
        if (!isGraveOf(table, grave))
            continue;
        if (auto inGrave = RowBlob::open(database, grave, column, row))
            return inGrave;
    }
    return found;
}

} // namespace skyflare
