#pragma once

#include "platform/persistence/EntityDescription.h"
#include "platform/persistence/FetchRequest.h"

#include <cstddef>
#include <string>
#include <vector>

namespace skyflare {

/// The table of one entity, as SQL: `objectID`, the String and Date attributes, the Binary ones last, so
/// that no row's small values lie behind its large one.
///
/// Threads: any; it does not change.
class EntityTable {
public:
    explicit EntityTable(EntityDescription entity);

    [[nodiscard]] const EntityDescription &entity() const { return entity_; }
    [[nodiscard]] const std::string &name() const { return entity_.name; }

    /// The attributes' indices in the order of their columns, which follow the column objectID.
    [[nodiscard]] const std::vector<std::size_t> &columns() const { return columns_; }

    /// Table and indexes.
    [[nodiscard]] std::string createSql() const;
    [[nodiscard]] std::string dropIndexesSql() const;
    /// One parameter for each column, in order.
    [[nodiscard]] std::string insertSql() const;
    [[nodiscard]] std::string deleteSql() const;
    [[nodiscard]] std::string containsSql() const;

    /// Parameters of both: 1 the predicate's value, 2 the limit. Binary columns give their length.
    [[nodiscard]] std::string selectSql(const FetchRequest &request) const;
    [[nodiscard]] std::string countSql(const FetchRequest &request) const;

    /// What a row's Binary columns take up, together.
    [[nodiscard]] std::string lengthSql() const;

private:
    EntityDescription entity_;
    std::vector<std::size_t> columns_;

    [[nodiscard]] std::string filter(const FetchRequest &request) const;
};

} // namespace skyflare
