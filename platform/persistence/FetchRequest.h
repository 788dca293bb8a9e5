#pragma once

#include "platform/persistence/AttributeValue.h"

#include <optional>
#include <string>

namespace skyflare {

/// Sorts by the order in which the objects came into the store, whatever their attributes say.
inline constexpr const char *orderOfInsertion = "objectID";

struct SortDescriptor {
    std::string key; ///< a String or Date attribute, or orderOfInsertion
    bool ascending = true;
};

/// Which objects of an entity, and in what order. Objects alike to the sort come in the order in which
/// they were inserted, or the reverse of it where the sort descends.
struct FetchRequest {
    struct Equality {
        std::string key; ///< a String or Date attribute
        AttributeValue value;
    };

    std::string entityName;
    std::optional<Equality> predicate = {};
    std::optional<SortDescriptor> sortDescriptor = {};
    int fetchLimit = 0;                 ///< 0 or less: no limit
    bool includesPendingChanges = true; ///< also objects that are not committed yet
    bool includesPropertyValues = true; ///< false: committed objects come without their values
};

} // namespace skyflare
