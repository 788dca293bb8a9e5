#include "platform/base/ShallowJson.h"

#include <nlohmann/json.hpp>

namespace skyflare {

using Json = nlohmann::json;

std::optional<Json> parseShallowJson(std::string_view text)
{
    constexpr int deepest = 16;
    bool isTooDeep = false;
    Json json = Json::parse(
        text.begin(), text.end(),
        [&](int depth, Json::parse_event_t, const Json &) {
            isTooDeep = isTooDeep || depth > deepest;
            return !isTooDeep;
        },
        false);
    if (isTooDeep || json.is_discarded())
        return std::nullopt;
    return json;
}

std::optional<Json> parseShallowJson(std::span<const std::uint8_t> text)
{
    return parseShallowJson(std::string_view(reinterpret_cast<const char *>(text.data()), text.size()));
}

} // namespace skyflare
