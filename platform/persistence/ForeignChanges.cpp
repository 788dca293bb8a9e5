#include "platform/persistence/ForeignChanges.h"

#include <utility>

namespace skyflare {

Result<> ForeignChanges::begin(Database &writer)
{
    auto looked = look(writer);
    isNew_ = false;
    return looked;
}

Result<ForeignChanges::Objects> ForeignChanges::objectsIn(Database &writer) const
{
    Objects objects;
    for (const EntityTable &table : tables_) {
        for (const char *what : {"count(*)", "max(objectID)"}) {
            const auto number = writer.number(std::string("SELECT ") + what + " FROM " + table.name());
            if (!number)
                return number.error();
            objects.push_back(*number);
        }
    }
    return objects;
}

Result<> ForeignChanges::look(Database &writer)
{
    const auto version = writer.number("PRAGMA data_version");
    if (!version)
        return version.error();
    if (*version == version_)
        return {};
    auto objects = objectsIn(writer);
    if (!objects)
        return objects.error();
    version_ = *version;
    isNew_ = isNew_ || *objects != known_;
    known_ = *std::move(objects);
    return {};
}

Result<> ForeignChanges::didWrite(Database &writer)
{
    auto objects = objectsIn(writer);
    if (!objects)
        return objects.error();
    known_ = *std::move(objects);
    return {};
}

Result<bool> ForeignChanges::take(Database &writer)
{
    if (const auto looked = look(writer); !looked)
        return looked.error();
    return std::exchange(isNew_, false);
}

} // namespace skyflare
