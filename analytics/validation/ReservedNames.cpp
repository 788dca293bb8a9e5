#include "analytics/validation/ReservedNames.h"

#include <algorithm>
#include <functional>
#include <span>

namespace skyflare {

namespace {

// The look-ups below halve the tables, so these are in order.
static_assert(std::ranges::is_sorted(reservedEventNames, {}, &ReservedName::publicName));
static_assert(std::ranges::is_sorted(reservedUserProperties, {}, &ReservedName::publicName));
static_assert(std::ranges::is_sorted(ecommerceEvents));
static_assert(std::ranges::is_sorted(ecommerceParameters));

const ReservedName *find(std::span<const ReservedName> table, std::string_view name)
{
    const auto found = std::ranges::lower_bound(table, name, {}, &ReservedName::publicName);
    return found != table.end() && found->publicName == name ? &*found : nullptr;
}

std::string_view storedName(std::span<const ReservedName> table, std::string_view name)
{
    const ReservedName *reserved = find(table, name);
    return reserved ? reserved->storedName : name;
}

} // namespace

bool isReservedEventName(std::string_view name)
{
    return find(reservedEventNames, name) != nullptr;
}

bool isReservedUserProperty(std::string_view name)
{
    return find(reservedUserProperties, name) != nullptr;
}

bool isEcommerceEvent(std::string_view name)
{
    return std::ranges::binary_search(ecommerceEvents, name);
}

bool isEcommerceParameter(std::string_view name)
{
    return std::ranges::binary_search(ecommerceParameters, name);
}

std::string_view storedEventName(std::string_view publicName)
{
    return storedName(reservedEventNames, publicName);
}

std::string_view storedUserPropertyName(std::string_view publicName)
{
    return storedName(reservedUserProperties, publicName);
}

} // namespace skyflare
