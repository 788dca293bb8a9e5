#include "analytics/worker/UserProperties.h"

#include "analytics/validation/EventParameterFilter.h"
#include "analytics/validation/RefusalLog.h"
#include "analytics/validation/ReservedNames.h"
#include "analytics/worker/MeasurementLog.h"
#include "platform/base/Text.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

using Kind = UserPropertyCall::Kind;

constexpr std::string_view adsProperty = "allow_personalized_ads";
constexpr std::string_view noAdsProperty = "_npa";
constexpr std::string_view sessionIDProperty = "_sid";

bool isPublicName(std::string_view name)
{
    return !name.starts_with('_');
}

bool isAboutAds(const UserPropertyCall &call)
{
    return call.kind == Kind::Public && call.name == adsProperty;
}

} // namespace

void UserProperties::setUserAttribute(UserPropertyCall call)
{
    if (call.enabled == Collection::Off) {
        writeLog(services_.monitor,
                 isAboutAds(call) ? measurementLog::adsWhileDisabled : measurementLog::propertyWhileDisabled);
        return;
    }
    std::optional<APMValue> value;
    if (const auto refusal = judge(call, value)) {
        refuse(*refusal);
        return;
    }
    if (!services_.journal.begin())
        return; // who opens the database has said why
    if (isAboutAds(call))
        mirrorAds(value);
    if (!value) {
        (void)services_.journal.deleteUserAttributeWithName(*call.name); // which logs why it failed
        return;
    }
    if (const auto refusal = judgeCount(call)) {
        refuse(*refusal);
        return;
    }
    set({*std::move(call.name), std::move(call.origin), services_.clock.secondsSince1970(),
         *std::move(value)});
}

std::optional<Refusal> UserProperties::judge(UserPropertyCall &call, std::optional<APMValue> &value)
{
    if (auto refusal = judgeName(call))
        return refusal;
    if (call.kind == Kind::Internal)
        call.name = storedUserPropertyName(*call.name);
    if (!call.value)
        return {};
    const bool isText = call.value->as<std::string>() != nullptr;
    if (!isText && call.kind != Kind::Internal)
        return wrongType(call);
    value = scalarOf(*call.value);
    if (!value)
        return wrongType(call);
    const Verdict verdict = call.kind == Kind::Public
                                ? validator_.isValidPublicUserAttributeValue(*value)
                                : validator_.isValidInternalUserAttributeValue(*value, *call.name);
    if (!verdict)
        return Refusal{CallSite::UserPropertyValue, verdict.failureCode, *call.name, lengthOf(*value)};
    return {};
}

std::optional<Refusal> UserProperties::judgeName(const UserPropertyCall &call)
{
    const APMObject given = std::optional<std::string_view>(call.name);
    const Verdict origin = APMDataTypeValidator::isForwardedEventOrigin(call.origin)
                               ? validator_.isValidForwardedEventOrigin(call.origin)
                               : validator_.isValidInternalEventOrigin(call.origin);
    if (!origin) {
        writeLog(services_.monitor, measurementLog::propertyOriginInvalid,
                 described(call.origin) + ", " + described(given));
        return Refusal{CallSite::UserPropertyName, origin.failureCode, nameAtFault(given)};
    }
    const Verdict name = call.kind == Kind::Public ? validator_.isValidPublicUserAttributeName(given)
                                                   : validator_.isValidInternalUserAttributeName(given);
    if (!name)
        return Refusal{CallSite::UserPropertyName, name.failureCode, nameAtFault(given)};
    return {};
}

Refusal UserProperties::wrongType(const UserPropertyCall &call)
{
    const LogText &text = call.kind == Kind::Public   ? measurementLog::propertyNotString
                          : call.kind == Kind::UserID ? measurementLog::userIDNotString
                                                      : measurementLog::propertyNotScalar;
    writeLog(services_.monitor, text, classNameOf(*call.value));
    return {CallSite::UserPropertyValue, FailureCode::WrongType, *call.name};
}

std::optional<Refusal> UserProperties::judgeCount(const UserPropertyCall &call)
{
    const auto &all = services_.journal.userAttributes();
    if (!isPublicName(*call.name) ||
        std::ranges::find(all, *call.name, &APMUserAttribute::name) != all.end() ||
        std::ranges::count_if(all, isPublicName, &APMUserAttribute::name) < mostPublic_)
        return {};
    writeLog(services_.monitor, measurementLog::tooManyProperties,
             measurementLog::withLimit(described(*call.name), mostPublic_));
    return Refusal{CallSite::UserPropertyCount, FailureCode::Valid, *call.name};
}

void UserProperties::set(const APMUserAttribute &attribute)
{
    (void)services_.journal.updateUserAttribute(attribute); // which logs why it failed
}

void UserProperties::mirrorAds(const std::optional<APMValue> &value)
{
    if (!value) {
        (void)services_.journal.deleteUserAttributeWithName(noAdsProperty);
        return;
    }
    set({std::string(noAdsProperty), std::string(autoOrigin), services_.clock.secondsSince1970(),
         APMValue(std::int64_t{isSameInAnyCase(*value->text(), "false") ? 1 : 0})});
}

void UserProperties::refuse(const Refusal &refusal)
{
    services_.ledger.countRefusal(EventLedger::RefusedWhat::Part, refusal.errorCode(), refusal.failureCode);
    services_.recorder.raise(refusal, services_.clock.secondsSince1970());
}

Result<std::vector<APMUserAttribute>> UserProperties::userProperties(IncludingInternal includingInternal)
{
    if (const auto begun = services_.journal.begin(); !begun)
        return begun.error();
    std::vector<APMUserAttribute> found;
    std::ranges::copy_if(services_.journal.userAttributes(), std::back_inserter(found),
                         [&](const APMUserAttribute &attribute) {
                             return includingInternal == IncludingInternal::Yes ||
                                    isPublicName(attribute.name);
                         });
    return found;
}

Result<std::int64_t> UserProperties::sessionID()
{
    const auto all = userProperties(IncludingInternal::Yes);
    if (!all)
        return all.error();
    const auto found = std::ranges::find(*all, sessionIDProperty, &APMUserAttribute::name);
    const auto *number = found == all->end() ? nullptr : found->value.integer();
    return number ? Result<std::int64_t>(*number) : Error{"analytics", 1, "There is no session yet"};
}

} // namespace skyflare
