#include "analytics/store/TableBuilder.h"

#include "analytics/store/APMSqliteStore.h"
#include "platform/base/Text.h"

#include <algorithm>

namespace skyflare {

namespace {

constexpr std::string_view oldSuffix = "_old";

std::string identifier(std::string_view name)
{
    std::string quotedName = "\"";
    for (const char each : name)
        quotedName.append(each == '"' ? 2 : 1, each);
    return quotedName + '"';
}

template <typename Columns> const auto *find(const Columns &columns, std::string_view name)
{
    const auto found = std::ranges::find_if(
        columns, [name](const auto &column) { return isSameInAnyCase(column.name, name); });
    return found == columns.end() ? nullptr : &*found;
}

/// The type of a declaration alone: "REAL" of "REAL NOT NULL".
std::string_view typeOf(const ColumnInfo &column)
{
    return column.type.substr(0, column.type.find(' '));
}

void append(std::string &list, std::string_view name, std::string_view type)
{
    list.append(list.empty() ? "" : ", ").append(identifier(name));
    if (!type.empty())
        list.append(" ").append(type);
}

} // namespace

TableBuilder::TableBuilder(APMSqliteStore &store, std::string_view name, const TableInfo &info)
    : store_(store), name_(name), info_(info)
{
}

Result<> TableBuilder::ensure()
{
    const auto exists = store_.tableExists(name_);
    if (!exists)
        return exists.error();
    if (!*exists)
        return create({});
    const auto present = presentColumns();
    if (!present)
        return present.error();
    if (const auto valid = validate(*present); !valid)
        return valid.error();
    if (const auto added = addMissing(*present); !added)
        return added.error();
    if (isToBeRebuilt(*present))
        return store_.performTransactionWithError([this] { return rebuild(); });
    return {};
}

Result<> TableBuilder::validate()
{
    const auto present = presentColumns();
    return present ? validate(*present) : present.error();
}

Result<std::vector<TableBuilder::Present>> TableBuilder::presentColumns()
{
    std::vector<Present> columns;
    const auto asked = store_.forEachRow(
        {"read columns", "PRAGMA table_info(" + identifier(name_) + ")"}, {}, [&](const Statement &row) {
            columns.push_back(
                {row.text(1).value_or(""), row.text(2).value_or(""), row.integer(3).value_or(0) != 0});
        });
    if (!asked)
        return asked.error();
    return columns;
}

Result<> TableBuilder::validate(const std::vector<Present> &present) const
{
    for (const ColumnInfo &column : info_.elementaryColumnInfo) {
        if (!find(present, column.name))
            return Error{"store", 4, "Table is missing required columns", {{"table", name_}}};
    }
    for (const Present &column : present) {
        if (column.isNotNull && !isKnown(column))
            return Error{"store", 5, "Table contains unknown non-optional columns", {{"table", name_}}};
    }
    return {};
}

bool TableBuilder::isKnown(const Present &column) const
{
    return find(info_.elementaryColumnInfo, column.name) || find(info_.addOnColumnInfo, column.name);
}

bool TableBuilder::isToBeRebuilt(const std::vector<Present> &present) const
{
    return std::ranges::any_of(info_.modifyColumnInfo, [&](const ColumnInfo &wanted) {
        const Present *column = find(present, wanted.name);
        return column && !isSameInAnyCase(column->type, typeOf(wanted));
    });
}

Result<> TableBuilder::create(const std::vector<Present> &unknown)
{
    std::string columns;
    for (const ColumnInfo &column : info_.elementaryColumnInfo) {
        const ColumnInfo *modified = find(info_.modifyColumnInfo, column.name);
        append(columns, column.name, modified ? modified->type : column.type);
    }
    for (const ColumnInfo &column : info_.addOnColumnInfo)
        append(columns, column.name, column.type);
    for (const Present &column : unknown)
        append(columns, column.name, column.type);
    if (!info_.constraint.empty())
        columns.append(", ").append(info_.constraint);
    return store_.run({"create table", "CREATE TABLE IF NOT EXISTS " + name_ + " (" + columns + ")"});
}

Result<> TableBuilder::addMissing(const std::vector<Present> &present)
{
    for (const ColumnInfo &column : info_.addOnColumnInfo) {
        if (find(present, column.name))
            continue;
        const auto added =
            store_.run({"add column", "ALTER TABLE " + name_ + " ADD COLUMN " + std::string(column.name) +
                                          " " + std::string(column.type)});
        if (!added)
            return added.error();
    }
    return {};
}

/// Rows keep their row ids: these are their age. Columns that are not known keep their values.
Result<> TableBuilder::rebuild()
{
    const auto present = presentColumns(); // with those just added
    if (!present)
        return present.error();
    std::vector<Present> unknown;
    std::string names = "rowid";
    for (const Present &column : *present) {
        append(names, column.name, {});
        if (!isKnown(column))
            unknown.push_back(column);
    }
    const std::string old = name_ + std::string(oldSuffix);
    if (const auto renamed = store_.run({"rename table", "ALTER TABLE " + name_ + " RENAME TO " + old});
        !renamed)
        return renamed.error();
    if (const auto created = create(unknown); !created)
        return created.error();
    std::string copy = "INSERT INTO " + name_ + " (" + names + ") SELECT " + names + " FROM " + old;
    if (const auto copied = store_.run({"copy rows", copy + " ORDER BY rowid"}); !copied)
        return copied.error();
    return store_.run({"drop table", "DROP TABLE " + old});
}

} // namespace skyflare
