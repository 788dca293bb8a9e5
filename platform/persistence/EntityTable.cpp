#include "platform/persistence/EntityTable.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace skyflare {

namespace {

std::string_view columnType(AttributeType type)
{
    switch (type) {
    case AttributeType::String:
        return "TEXT";
    case AttributeType::Date:
        return "REAL";
    case AttributeType::Binary:
        return "BLOB";
    }
    return "";
}

/// Looks at the row's header alone; nothing for a value that is no blob.
std::string blobLength(const std::string &column)
{
    return "CASE typeof(" + column + ") WHEN 'blob' THEN length(" + column + ") END";
}

} // namespace

EntityTable::EntityTable(EntityDescription entity)
    : entity_(std::move(entity)), columns_(entity_.attributes.size())
{
    std::iota(columns_.begin(), columns_.end(), std::size_t{0});
    std::stable_partition(columns_.begin(), columns_.end(), [this](std::size_t index) {
        return entity_.attributes[index].type != AttributeType::Binary;
    });
}

std::string EntityTable::createSql() const
{
    // AUTOINCREMENT: an identity is never used again, so that bytes read later are never another row's.
    std::string sql = "CREATE TABLE " + name() + "(objectID INTEGER PRIMARY KEY AUTOINCREMENT";
    std::string indexes;
    for (const std::size_t column : columns_) {
        const AttributeDescription &attribute = entity_.attributes[column];
        sql.append(", ").append(attribute.name).append(" ").append(columnType(attribute.type));
        if (attribute.indexed)
            indexes += "CREATE INDEX " + name() + '_' + attribute.name + " ON " + name() + '(' +
                       attribute.name + ");";
    }
    return sql + ");" + indexes;
}

std::string EntityTable::dropIndexesSql() const
{
    std::string sql;
    for (const AttributeDescription &attribute : entity_.attributes) {
        if (attribute.indexed)
            sql += "DROP INDEX " + name() + '_' + attribute.name + ';';
    }
    return sql;
}

std::string EntityTable::insertSql() const
{
    std::string names;
    std::string parameters;
    for (const std::size_t column : columns_) {
        const std::string_view separator = names.empty() ? "" : ", ";
        names.append(separator).append(entity_.attributes[column].name);
        parameters.append(separator).append("?");
    }
    return "INSERT INTO " + name() + '(' + names + ") VALUES(" + parameters + ')';
}

std::string EntityTable::deleteSql() const
{
    return "DELETE FROM " + name() + " WHERE objectID = ?1";
}

std::string EntityTable::containsSql() const
{
    return "SELECT 1 FROM " + name() + " WHERE objectID = ?1";
}

std::string EntityTable::filter(const FetchRequest &request) const
{
    if (!request.predicate)
        return {};
    return " WHERE " + entity_.attributes[entity_.indexOf(request.predicate->key)].name + " = ?1";
}

std::string EntityTable::selectSql(const FetchRequest &request) const
{
    std::string sql = "SELECT objectID";
    for (const std::size_t column : columns_) {
        if (!request.includesPropertyValues)
            break;
        const AttributeDescription &attribute = entity_.attributes[column];
        sql += ", " + (attribute.type == AttributeType::Binary ? blobLength(attribute.name) : attribute.name);
    }
    sql += " FROM " + name() + filter(request);
    if (const auto &sort = request.sortDescriptor) {
        const std::string direction = sort->ascending ? " ASC" : " DESC";
        sql += " ORDER BY ";
        if (sort->key != orderOfInsertion)
            sql += entity_.attributes[entity_.indexOf(sort->key)].name + direction + ", ";
        sql += "objectID" + direction;
    }
    return sql + " LIMIT ?2";
}

std::string EntityTable::countSql(const FetchRequest &request) const
{
    return "SELECT count(*) FROM " + name() + filter(request);
}

std::string EntityTable::lengthSql() const
{
    std::string sql = "0";
    for (const AttributeDescription &attribute : entity_.attributes) {
        if (attribute.type == AttributeType::Binary)
            sql += " + ifnull(" + blobLength(attribute.name) + ", 0)";
    }
    return sql;
}

} // namespace skyflare
