#include "analytics/validation/Refusal.h"

#include "analytics/validation/CodePoints.h"

#include <algorithm>
#include <array>

namespace skyflare {

namespace {

struct ErrorRow {
    CallSite site;
    std::optional<FailureCode> failureCode; ///< nothing: every one that has no row of its own
    APMErrorCode errorCode;
};

constexpr std::nullopt_t otherwise = std::nullopt;

/// The whole mapping. A failure that no error code describes has the general one of its place:
/// - an origin has no code, and nobody but a programmer gives one: its event is no good;
/// - of an array, too many items and an item that is no dictionary make an invalid value;
/// - for the value of a user property there is but one code, whatever is wrong with it.
constexpr std::array<ErrorRow, 21> errorRows{{
    {CallSite::EventName, FailureCode::Reserved, APMErrorCode::EventNameIsReserved},
    {CallSite::EventName, otherwise, APMErrorCode::InvalidEventName},
    {CallSite::EventOrigin, otherwise, APMErrorCode::InvalidEventName},
    {CallSite::ParameterName, FailureCode::Reserved, APMErrorCode::ParameterNameIsReserved},
    {CallSite::ParameterName, otherwise, APMErrorCode::InvalidParameterName},
    {CallSite::ParameterValue, FailureCode::NotNumeric, APMErrorCode::ValueIsNotNumeric},
    {CallSite::ParameterValue, FailureCode::BadCurrencyCode, APMErrorCode::CurrencyCodeIsMissingOrInvalid},
    {CallSite::ParameterValue, otherwise, APMErrorCode::InvalidParameterValue},
    {CallSite::ArrayParameter, FailureCode::ArrayNotAllowed, APMErrorCode::InvalidArrayParamEventName},
    {CallSite::ArrayParameter, FailureCode::ArrayName, APMErrorCode::InvalidArrayParamName},
    {CallSite::ArrayParameter, FailureCode::NestedArray, APMErrorCode::InvalidArrayParamNesting},
    {CallSite::ArrayParameter, otherwise, APMErrorCode::InvalidParameterValue},
    {CallSite::UserPropertyName, FailureCode::Reserved, APMErrorCode::UserPropertyNameIsReserved},
    {CallSite::UserPropertyName, otherwise, APMErrorCode::InvalidUserPropertyName},
    {CallSite::UserPropertyValue, otherwise, APMErrorCode::UserPropertyValueTooLong},
    {CallSite::ParameterCount, otherwise, APMErrorCode::ParameterLimitReached},
    {CallSite::CustomItemParameter, otherwise, APMErrorCode::CustomParamsInArrayElement},
    {CallSite::CustomItemParameterCount, otherwise, APMErrorCode::ItemScopedCustomParameterLimitReached},
    {CallSite::UserPropertyCount, otherwise, APMErrorCode::UserPropertyLimitReached},
    {CallSite::EventNameCount, otherwise, APMErrorCode::EventLimitReached},
    {CallSite::PublicEventCount, otherwise, APMErrorCode::PublicEventLimitReached},
}};

} // namespace

APMErrorCode errorCodeFor(CallSite site, FailureCode failureCode)
{
    const auto found = std::ranges::find_if(errorRows, [&](const ErrorRow &row) {
        return row.site == site && (!row.failureCode || *row.failureCode == failureCode);
    });
    return found == errorRows.end() ? APMErrorCode::NoError : found->errorCode;
}

std::string nameAtFault(const APMObject &name)
{
    if (const std::string_view *text = name.text())
        return std::string(*text);
    if (const APMObject::Other *other = name.other())
        return std::string(other->className);
    return name.isNil() ? "(nil)" : "APMValue";
}

std::optional<std::int64_t> lengthOf(const APMValue &value)
{
    if (const std::string *text = value.text())
        return static_cast<std::int64_t>(codePoints::count(*text));
    if (const APMValue::Array *array = value.array())
        return static_cast<std::int64_t>(array->size());
    return {};
}

} // namespace skyflare
