#include "analytics/sessions/APMScreen.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace skyflare {

namespace {

struct ScreenKeys {
    std::string_view name;
    std::string_view className;
    std::string_view instanceID;
};

constexpr ScreenKeys currentKeys{"_sn", "_sc", "_si"};
constexpr ScreenKeys previousKeys{"_pn", "_pc", "_pi"};

APMParameters parametersOf(const std::optional<APMScreen> &screen, const ScreenKeys &keys)
{
    APMParameters parameters;
    if (!screen)
        return parameters;
    if (screen->name)
        parameters.push_back({std::string(keys.name), APMValue(*screen->name)});
    if (screen->className)
        parameters.push_back({std::string(keys.className), APMValue(*screen->className)});
    parameters.push_back({std::string(keys.instanceID), APMValue(screen->instanceID)});
    return parameters;
}

} // namespace

APMParameters screenParametersOf(const std::optional<APMScreen> &screen)
{
    return parametersOf(screen, currentKeys);
}

APMParameters previousScreenParametersOf(const std::optional<APMScreen> &screen)
{
    return parametersOf(screen, previousKeys);
}

bool haveScreen(const APMParameters &parameters)
{
    return std::ranges::any_of(parameters, [](const APMParameter &parameter) {
        return parameter.name == currentKeys.name || parameter.name == currentKeys.className ||
               parameter.name == currentKeys.instanceID;
    });
}

} // namespace skyflare
