#include "analytics/validation/EventParameterFilter.h"

#include "analytics/validation/ReservedNames.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr std::string_view valueParameter = "value";
constexpr std::string_view currencyParameter = "currency";

auto find(APMParameters &parameters, std::string_view name)
{
    return std::ranges::find(parameters, name, &APMParameter::name);
}

} // namespace

std::optional<APMValue> scalarOf(PropertyList &value)
{
    // Made in place; gcc 12 sees something uninitialised in the temporary that a move would need.
    std::optional<APMValue> scalar;
    if (auto *text = std::get_if<std::string>(&value.value()))
        scalar.emplace(std::move(*text));
    else if (const bool *flag = value.as<bool>())
        scalar.emplace(std::int64_t{*flag ? 1 : 0});
    else if (const std::int64_t *integer = value.as<std::int64_t>())
        scalar.emplace(*integer);
    else if (const double *real = value.as<double>())
        scalar.emplace(*real);
    return scalar;
}

/// One event's way through the filter.
class EventParameterFilter::Pass {
public:
    Pass(const EventParameterFilter &filter, std::string_view eventName, IsPublicEvent isPublicEvent,
         std::size_t parameterCount)
        : filter_(filter), eventName_(eventName), isPublic_(isPublicEvent == IsPublicEvent::Yes)
    {
        filtered_.parameters.reserve(parameterCount);
    }

    void take(std::string name, PropertyList value);
    Filtered finish();

private:
    const EventParameterFilter &filter_;
    std::string_view eventName_;
    bool isPublic_;
    bool hasReportedLimit_ = false;
    Filtered filtered_;

    void refuse(Refusal refusal) { filtered_.refusals.push_back(std::move(refusal)); }

    bool isFull(const std::string &name);
    bool isValidName(const std::string &name);
    std::optional<APMValue> acceptedScalar(const std::string &name, PropertyList &value);
    std::optional<APMValue> acceptedItems(const std::string &name, PropertyList::Array &&items);
    APMParameters acceptedItem(PropertyList::Dictionary &&item);
    bool mayBeInItem(const std::string &name, std::size_t customParameters);
    void requireCurrency();
};

bool EventParameterFilter::Pass::isFull(const std::string &name)
{
    const std::size_t most = filter_.limits_.publicEventParameters;
    if (!isPublic_ || filtered_.parameters.size() < most)
        return false;
    refuse({CallSite::ParameterCount, FailureCode::Valid, name});
    if (!std::exchange(hasReportedLimit_, true))
        filter_.log_.write(APMMonitor::Level::Error, messages::tooManyParameters, {.number = most});
    return true;
}

bool EventParameterFilter::Pass::isValidName(const std::string &name)
{
    const APMDataTypeValidator &validator = filter_.validator_;
    const Verdict verdict = isPublic_ ? validator.isValidPublicEventParameterName(name)
                                      : validator.isValidInternalEventParameterName(name);
    if (!verdict)
        refuse({CallSite::ParameterName, verdict.failureCode, name});
    return static_cast<bool>(verdict);
}

std::optional<APMValue> EventParameterFilter::Pass::acceptedScalar(const std::string &name,
                                                                   PropertyList &value)
{
    auto scalar = scalarOf(value);
    if (!scalar) {
        filter_.log_.write(APMMonitor::Level::Warning, messages::unsupportedType,
                           {.value = APMObject::Other{classNameOf(value)}});
        refuse({CallSite::ParameterValue, FailureCode::WrongType, name});
        return {};
    }
    const APMDataTypeValidator &validator = filter_.validator_;
    const Verdict verdict = isPublic_ ? validator.isValidPublicEventParameterValue(*scalar)
                                      : validator.isValidInternalEventParameterValue(*scalar);
    if (verdict)
        return scalar;
    refuse({CallSite::ParameterValue, verdict.failureCode, name, lengthOf(*scalar)});
    return {};
}

bool EventParameterFilter::Pass::mayBeInItem(const std::string &name, std::size_t customParameters)
{
    const ValidationLimits &limits = filter_.limits_;
    if (!limits.allowsCustomItemParameters) {
        filter_.log_.write(APMMonitor::Level::Error, messages::customItemParameter, {.value = name});
        refuse({CallSite::CustomItemParameter, FailureCode::Valid, name});
        return false;
    }
    if (customParameters < limits.customItemParameters)
        return true;
    filter_.log_.write(APMMonitor::Level::Error, messages::tooManyCustomItemParameters,
                       {.number = limits.customItemParameters, .value = name});
    refuse({CallSite::CustomItemParameterCount, FailureCode::Valid, name});
    return false;
}

APMParameters EventParameterFilter::Pass::acceptedItem(PropertyList::Dictionary &&item)
{
    APMParameters accepted;
    std::size_t customParameters = 0;
    for (auto &[name, value] : item) {
        if (!isValidName(name))
            continue;
        const bool isCustom = !isEcommerceParameter(name);
        if (const auto *array = value.as<PropertyList::Array>()) {
            const Verdict verdict = filter_.validator_.isValidArrayParamForEvent(
                eventName_, name, array->size(), IsNestedArrayParam::Yes);
            refuse({CallSite::ArrayParameter, verdict.failureCode, name});
            continue;
        }
        if (isCustom && !mayBeInItem(name, customParameters))
            continue;
        if (auto scalar = acceptedScalar(name, value)) {
            accepted.push_back({name, *std::move(scalar)});
            customParameters += isCustom ? 1 : 0;
        }
    }
    return accepted;
}

std::optional<APMValue> EventParameterFilter::Pass::acceptedItems(const std::string &name,
                                                                  PropertyList::Array &&items)
{
    const APMDataTypeValidator &validator = filter_.validator_;
    const auto count = static_cast<std::int64_t>(items.size());
    Verdict verdict =
        validator.isValidArrayParamForEvent(eventName_, name, items.size(), IsNestedArrayParam::No);
    for (auto item = items.begin(); verdict && item != items.end(); ++item)
        verdict = validator.isValidArrayParamItem(*item);
    if (!verdict) {
        refuse({CallSite::ArrayParameter, verdict.failureCode, name, count});
        return {};
    }
    APMValue::Array accepted;
    accepted.reserve(items.size());
    for (PropertyList &item : items)
        accepted.push_back(acceptedItem(std::get<PropertyList::Dictionary>(std::move(item.value()))));
    return APMValue(std::move(accepted));
}

void EventParameterFilter::Pass::take(std::string name, PropertyList value)
{
    if (isFull(name) || !isValidName(name))
        return;
    auto *items = std::get_if<PropertyList::Array>(&value.value());
    auto accepted = items ? acceptedItems(name, std::move(*items)) : acceptedScalar(name, value);
    if (accepted)
        filtered_.parameters.push_back({std::move(name), *std::move(accepted)});
}

void EventParameterFilter::Pass::requireCurrency()
{
    APMParameters &parameters = filtered_.parameters;
    const auto value = find(parameters, valueParameter);
    if (value == parameters.end())
        return;
    Verdict verdict = filter_.validator_.isValidNumericValue(value->value);
    if (verdict) {
        const auto currency = find(parameters, currencyParameter);
        verdict = filter_.validator_.isValidCurrencyCode(
            currency == parameters.end() ? APMObject(std::nullopt) : APMObject(currency->value));
        if (verdict)
            return;
        filter_.log_.write(APMMonitor::Level::Warning, messages::valueDiscarded);
    }
    refuse({CallSite::ParameterValue, verdict.failureCode, value->name, lengthOf(value->value)});
    parameters.erase(value);
}

EventParameterFilter::Filtered EventParameterFilter::Pass::finish()
{
    requireCurrency();
    return std::move(filtered_);
}

EventParameterFilter::Filtered EventParameterFilter::filter(std::string_view eventName,
                                                            IsPublicEvent isPublicEvent,
                                                            PropertyList::Dictionary parameters) const
{
    Pass pass(*this, eventName, isPublicEvent, parameters.size());
    while (!parameters.empty()) {
        auto node = parameters.extract(parameters.begin());
        pass.take(std::move(node.key()), std::move(node.mapped()));
    }
    return pass.finish();
}

} // namespace skyflare
