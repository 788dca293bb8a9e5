#pragma once

#include "analytics/model/APMUserAttribute.h"
#include "analytics/store/APMSqliteStore.h"

namespace skyflare {

enum class IncludingInternal { No, Yes };

/// The properties of the user as they are now.
///
/// Threads: its store's, which must outlive it.
class UserAttributeTable {
public:
    explicit UserAttributeTable(APMSqliteStore &store) : store_(store) {}

    Result<> update(const APMUserAttribute &attribute);
    Result<> deleteWithName(std::string_view name);
    /// By name. One that cannot be read is logged and left out.
    Result<std::vector<APMUserAttribute>> all(IncludingInternal includingInternal);

private:
    APMSqliteStore &store_;
};

} // namespace skyflare
