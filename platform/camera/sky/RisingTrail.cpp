#include "platform/camera/sky/RisingTrail.h"

#include "platform/camera/sky/HazeGrid.h"
#include "platform/camera/sky/LightBuffer.h"
#include "platform/camera/sky/SkyRandom.h"

#include <cmath>

namespace skyflare {

namespace {

constexpr float glowSeconds = 0.42F;
constexpr float sparkSeconds = 0.70F;
constexpr float sparkStep = 0.014F; ///< seconds between two sparks
constexpr LightColor ember{1.0F, 0.52F, 0.18F};

struct Place {
    float x = 0, y = 0; ///< pixels
};

/// Where the shell is at `share` of its way, 0 to 1: fast at first, nearly still when it breaks.
Place onTheWay(const ShellPlan &plan, const SceneLayout &layout, float share)
{
    const auto width = static_cast<float>(layout.width);
    const auto shore = static_cast<float>(layout.shore);
    const float eased = 1.0F - (1.0F - share) * (1.0F - share);
    const float wobble = std::sin(share * 21.0F + plan.x * 40.0F) * 0.0016F * layout.unit;
    return {width * (plan.fromX + (plan.x - plan.fromX) * share) + wobble,
            shore + (plan.y * shore - shore) * eased};
}

} // namespace

void drawRisingTrail(const ShellPlan &plan, const SceneLayout &layout, float sinceBreak, LightBuffer &light,
                     HazeGrid &haze)
{
    const float now = plan.riseSeconds + sinceBreak; // since it was fired
    if (now <= 0 || sinceBreak > sparkSeconds)
        return;
    const auto placeAt = [&](float seconds) { return onTheWay(plan, layout, seconds / plan.riseSeconds); };
    const auto glow = [&](float lag) {
        const float left = std::max(0.0F, 1.0F - lag / glowSeconds);
        return ember * (0.60F * left * left);
    };
    constexpr int pieces = 8;
    for (int i = 0; i < pieces; ++i) {
        const float newer = std::min(now - glowSeconds * static_cast<float>(i) / pieces, plan.riseSeconds);
        const float older =
            std::min(now - glowSeconds * static_cast<float>(i + 1) / pieces, plan.riseSeconds);
        if (newer <= 0 || newer <= older)
            continue;
        const Place from = placeAt(newer);
        const Place to = placeAt(std::max(older, 0.0F));
        light.addStreak(from.x, from.y, to.x, to.y, glow(now - newer), glow(now - older));
    }
    const int last = static_cast<int>(std::min(now, plan.riseSeconds) / sparkStep);
    const int first = std::max(0, static_cast<int>((now - sparkSeconds) / sparkStep) + 1);
    for (int spark = first; spark <= last; ++spark) {
        const float born = static_cast<float>(spark) * sparkStep;
        const float old = now - born;
        const float left = 1.0F - old / sparkSeconds;
        const auto number = static_cast<std::uint64_t>(spark);
        const float aside = (unitOf(plan.id, number) - 0.5F) * 0.030F * layout.unit * old;
        const Place place = placeAt(born);
        light.addSpot(place.x + aside, place.y + 0.055F * old * old * layout.unit, 0.0016F * layout.unit,
                      ember * (1.5F * left * left * unitOf(plan.id + 1, number)));
    }
    if (sinceBreak < 0) {
        const Place head = placeAt(now);
        light.addSpot(head.x, head.y, 0.0030F * layout.unit, LightColor{1.0F, 0.76F, 0.44F} * 1.2F);
        haze.addHalo(head.x, head.y, ember * (0.00005F * layout.unit * layout.unit));
    }
}

} // namespace skyflare
