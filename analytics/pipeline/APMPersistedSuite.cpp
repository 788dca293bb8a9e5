#include "analytics/pipeline/APMPersistedSuite.h"

#include <algorithm>
#include <array>
#include <utility>

namespace skyflare {

namespace {

constexpr std::string_view hexadecimalDigits = "0123456789abcdef";
constexpr std::size_t idBytes = 16; // two digits each

bool isID(std::string_view text)
{
    return text.size() == 2 * idBytes && text.find_first_not_of(hexadecimalDigits) == std::string_view::npos;
}

} // namespace

std::optional<bool> APMPersistedSuite::value(APMSuiteKey<bool> key) const
{
    return defaults_.hasObjectForKey(key.name) ? std::optional(defaults_.boolForKey(key.name)) : std::nullopt;
}

std::optional<std::int64_t> APMPersistedSuite::value(APMSuiteKey<std::int64_t> key) const
{
    return defaults_.hasObjectForKey(key.name) ? std::optional(defaults_.integerForKey(key.name))
                                               : std::nullopt;
}

std::optional<std::string> APMPersistedSuite::value(APMSuiteKey<std::string> key) const
{
    return defaults_.stringForKey(key.name);
}

void APMPersistedSuite::setValue(bool value, APMSuiteKey<bool> key)
{
    defaults_.setBool(value, key.name);
}

void APMPersistedSuite::setValue(std::int64_t value, APMSuiteKey<std::int64_t> key)
{
    defaults_.setInteger(value, key.name);
}

void APMPersistedSuite::setValue(std::string value, APMSuiteKey<std::string> key)
{
    defaults_.setObject(std::move(value), key.name);
}

Result<std::string> APMPersistedSuite::appInstanceID()
{
    const std::scoped_lock lock(makingID_);
    if (auto id = value(suiteKeys::appInstanceID); id && isID(*id))
        return *std::move(id);
    return makeID();
}

Result<std::string> APMPersistedSuite::resetAppInstanceID()
{
    const std::scoped_lock lock(makingID_);
    return makeID();
}

Result<std::string> APMPersistedSuite::makeID()
{
    std::array<std::uint8_t, idBytes> bytes{};
    if (const auto filled = random_.fill(bytes); !filled)
        return Error{"analytics",
                     filled.error().code,
                     "Cannot generate a new app instance ID",
                     {{"cause", filled.error().message}}};
    std::string id;
    for (const std::uint8_t byte : bytes) {
        id += hexadecimalDigits[byte >> 4];
        id += hexadecimalDigits[byte & 0x0FU];
    }
    setValue(id, suiteKeys::appInstanceID);
    return id;
}

} // namespace skyflare
