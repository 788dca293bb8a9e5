#pragma once

#include "analytics/store/TableInfo.h"
#include "platform/base/Result.h"

#include <string>
#include <vector>

namespace skyflare {

class APMSqliteStore;

/// Makes one table as this version wants it, from nothing or from what an older version has left.
///
/// Threads: its store's. Borrows the store, and the texts of the info.
class TableBuilder {
public:
    TableBuilder(APMSqliteStore &store, std::string_view name, const TableInfo &info);

    Result<> ensure();
    Result<> validate();

private:
    /// A column as the file has it.
    struct Present {
        std::string name;
        std::string type;
        bool isNotNull = false;
    };

    APMSqliteStore &store_;
    const std::string name_;
    const TableInfo info_;

    Result<std::vector<Present>> presentColumns();
    Result<> validate(const std::vector<Present> &present) const;
    Result<> create(const std::vector<Present> &unknown);
    Result<> addMissing(const std::vector<Present> &present);
    Result<> rebuild();
    [[nodiscard]] bool isKnown(const Present &column) const;
    [[nodiscard]] bool isToBeRebuilt(const std::vector<Present> &present) const;
};

} // namespace skyflare
