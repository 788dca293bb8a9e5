#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

enum class AttributeType {
    String,
    Date,   ///< seconds since 1970
    Binary, ///< read from its row when asked for
};

/// One named value of an entity. Names are plain identifiers.
struct AttributeDescription {
    std::string name;
    AttributeType type;
    bool indexed = false; ///< requests filter or sort by it
};

/// One kind of record. Every attribute may be nothing.
struct EntityDescription {
    std::string name;
    std::vector<AttributeDescription> attributes;

    /// Which attribute has that name. Asking for one that the entity lacks is a programming error.
    [[nodiscard]] std::size_t indexOf(std::string_view key) const;
};

/// What a container keeps, as data.
struct ManagedObjectModel {
    int version = 1; ///< of the file's form; a file with a higher one is refused
    std::vector<EntityDescription> entities;
};

/// Says why on standard error and stops the program.
[[noreturn]] void programmingError(const std::string &why);

} // namespace skyflare
