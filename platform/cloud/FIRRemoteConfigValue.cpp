#include "platform/cloud/FIRRemoteConfigValue.h"

#include "platform/base/ShallowJson.h"
#include "platform/base/Text.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>

namespace skyflare {

namespace {

using Json = nlohmann::json;

double numberIn(std::string_view text)
{
    text = withoutOuterSpace(text);
    double number = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failed == std::errc{} && end == text.data() + text.size() && std::isfinite(number) ? number : 0;
}

FIRRemoteConfigValue valueOf(const Json &json)
{
    if (json.is_string())
        return {json.get<std::string>(), numberIn(json.get_ref<const std::string &>())};
    if (json.is_boolean())
        return {json.dump(), json.get<bool>() ? 1.0 : 0.0};
    if (json.is_number())
        return {json.dump(), json.get<double>()};
    return json.is_null() ? FIRRemoteConfigValue() : FIRRemoteConfigValue{json.dump(), 0};
}

} // namespace

std::optional<std::map<std::string, std::string>> FIRRemoteConfigValue::textsByKey() const
{
    const auto json = parseShallowJson(text_);
    if (!json || !json->is_object())
        return std::nullopt;
    std::map<std::string, std::string> texts;
    for (const auto &[key, value] : json->items()) {
        if (!value.is_string())
            return std::nullopt;
        texts.emplace(key, value.get<std::string>());
    }
    return texts;
}

Result<FIRRemoteConfigValues> parseRemoteConfig(std::string_view json)
{
    const auto parsed = parseShallowJson(json);
    if (!parsed || !parsed->is_object())
        return Error{"remote configuration", 1, "the answer is no JSON object"};
    FIRRemoteConfigValues values;
    for (const auto &[key, value] : parsed->items())
        values.emplace(key, valueOf(value));
    return values;
}

} // namespace skyflare
