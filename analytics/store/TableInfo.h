#pragma once

#include <span>
#include <string_view>

namespace skyflare {

/// A column and its declaration, as it stands in "CREATE TABLE": {"timestamp", "REAL NOT NULL"}.
struct ColumnInfo {
    std::string_view name;
    std::string_view type;
};

/// The columns of a table, by the version that brought them.
///
/// Threads: any; a view of constants.
struct TableInfo {
    std::span<const ColumnInfo> elementaryColumnInfo; ///< every version has had them
    std::span<const ColumnInfo> addOnColumnInfo;      ///< later ones have; an older table gains them as NULL
    /// Elementary columns with the declaration that they have now. A table with another one is rebuilt.
    std::span<const ColumnInfo> modifyColumnInfo;
    std::string_view constraint; ///< of the table as a whole: "PRIMARY KEY (…)"; may be empty
};

} // namespace skyflare
