#include "analytics/pipeline/APMPersistedSuite.h"

#include "platform/base/RandomIdentifier.h"

#include <utility>

namespace skyflare {

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
    if (auto id = value(suiteKeys::appInstanceID); id && isRandomIdentifier(*id))
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
    auto id = makeRandomIdentifier(random_);
    if (!id)
        return Error{"analytics",
                     id.error().code,
                     "Cannot generate a new app instance ID",
                     {{"cause", id.error().message}}};
    setValue(*id, suiteKeys::appInstanceID);
    return id;
}

} // namespace skyflare
