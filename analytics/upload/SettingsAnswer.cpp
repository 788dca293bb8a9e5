#include "analytics/upload/SettingsAnswer.h"

#include "analytics/upload/APMRemoteConfig.h"
#include "platform/base/ShallowJson.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace skyflare {

namespace {

using Json = nlohmann::json;

constexpr std::size_t mostBytes = 65'536;
constexpr std::string_view uploadSubdomainKey = "uploadSubdomain";

std::optional<PropertyList> scalarOf(const Json &json)
{
    if (json.is_boolean())
        return PropertyList(json.get<bool>());
    // A whole number may be too large for us, but then it is out of all bounds.
    if (json.is_number())
        return PropertyList(json.get<double>());
    return std::nullopt;
}

} // namespace

Result<SettingsAnswer> SettingsAnswer::parse(std::span<const std::uint8_t> json)
{
    if (json.size() > mostBytes)
        return Error{"settings", 1, "the settings are too long"};
    const auto parsed = parseShallowJson(json);
    if (!parsed || !parsed->is_object())
        return Error{"settings", 2, "the settings are no JSON object"};
    SettingsAnswer answer;
    for (const auto &[key, value] : parsed->items()) {
        if (auto scalar = scalarOf(value); scalar && APMRemoteConfig::isKey(key))
            answer.values.emplace(key, *std::move(scalar));
        else if (key == uploadSubdomainKey && value.is_string())
            answer.uploadSubdomain = value.get<std::string>();
    }
    return answer;
}

} // namespace skyflare
