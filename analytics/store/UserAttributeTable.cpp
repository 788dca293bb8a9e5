#include "analytics/store/UserAttributeTable.h"

#include "analytics/proto/UserAttributeMessage.h"
#include "analytics/store/StoreLog.h"
#include "platform/base/Text.h"

namespace skyflare {

Result<> UserAttributeTable::update(const APMUserAttribute &attribute)
{
    const std::string name = validUtf8(attribute.name);
    const std::string origin = validUtf8(attribute.origin);
    const Bytes value = UserAttributeMessage::encodeValue(attribute.value);
    return store_.insert(
        {"update user attribute",
         "INSERT OR REPLACE INTO user_attributes (name, set_timestamp, value, origin) VALUES (?, ?, ?, ?)"},
        {name, attribute.setTimestamp, value, origin});
}

Result<> UserAttributeTable::deleteWithName(std::string_view name)
{
    const std::string asStored = validUtf8(name);
    return store_.deleteRecordFromTableWithName("user_attributes", "name", asStored);
}

Result<std::vector<APMUserAttribute>> UserAttributeTable::all(IncludingInternal includingInternal)
{
    std::vector<APMUserAttribute> attributes;
    const auto asked = store_.forEachRow(
        {"query user attributes",
         "SELECT name, origin, set_timestamp, value FROM user_attributes ORDER BY name"},
        {}, [&](const Statement &row) {
            std::string name = row.text(0).value_or("");
            if (includingInternal == IncludingInternal::No && name.starts_with('_'))
                return;
            const auto value =
                UserAttributeMessage::decodeValue(row.bytes(3).value_or(std::span<const std::uint8_t>()));
            if (value)
                attributes.push_back(
                    {std::move(name), row.text(1).value_or(""), row.real(2).value_or(0), *value});
            else
                writeLog(store_.monitor(), storeLog::unreadableAttribute,
                         name + ", " + value.error().message);
        });
    if (!asked)
        return asked.error();
    return attributes;
}

} // namespace skyflare
