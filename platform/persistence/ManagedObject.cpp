#include "platform/persistence/ManagedObject.h"

#include <utility>

namespace skyflare {

namespace {

bool fits(const AttributeValue &value, AttributeType type)
{
    switch (type) {
    case AttributeType::String:
        return std::holds_alternative<std::string>(value);
    case AttributeType::Date:
        return std::holds_alternative<double>(value);
    case AttributeType::Binary:
        return std::holds_alternative<std::shared_ptr<const ByteSource>>(value);
    }
    return false;
}

} // namespace

ManagedObject::ManagedObject(const EntityDescription &entity)
    : entity_(entity), values_(entity.attributes.size())
{
}

ManagedObject::ManagedObject(const EntityDescription &entity, std::int64_t objectID,
                             std::vector<AttributeValue> values)
    : entity_(entity), values_(std::move(values)), objectID_(objectID)
{
}

void ManagedObject::setValue(AttributeValue value, std::string_view forKey)
{
    const std::size_t index = entity_.indexOf(forKey);
    const bool isNothing = std::holds_alternative<std::monostate>(value);
    if (!isNothing && !fits(value, entity_.attributes[index].type))
        programmingError("a value of another type for \"" + std::string(forKey) + '"');
    if (objectID())
        programmingError("a value for \"" + std::string(forKey) + "\" of an object that is saved already");
    const std::scoped_lock lock(mutex_);
    values_[index] = std::move(value);
}

AttributeValue ManagedObject::valueForKey(std::string_view key) const
{
    const std::size_t index = entity_.indexOf(key);
    const std::scoped_lock lock(mutex_);
    return values_[index];
}

std::optional<std::int64_t> ManagedObject::objectID() const
{
    const std::int64_t id = objectID_;
    return id == 0 ? std::nullopt : std::optional(id);
}

} // namespace skyflare
