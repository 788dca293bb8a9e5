#include "platform/camera/sky/SlowGlow.h"

#include "platform/camera/sky/SkyRandom.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

constexpr double periodSeconds = 11.0;

float eased(float share)
{
    const float inside = std::clamp(share, 0.0F, 1.0F);
    return inside * inside * (3.0F - 2.0F * inside);
}

} // namespace

HazeLight SlowGlow::lightAt(double seconds, const SceneLayout &layout) const
{
    const double turn = std::floor(seconds / periodSeconds);
    SkyRandom random(seed_, 0x510EU, static_cast<std::uint64_t>(static_cast<std::int64_t>(turn)));
    const auto now = static_cast<float>(seconds - turn * periodSeconds) - random.between(2.0F, 3.2F);
    const float rise = random.between(2.2F, 3.0F);
    const float hold = random.between(0.3F, 1.0F);
    const float fall = random.between(2.2F, 3.0F);
    const float share = eased(now / rise) * (1.0F - eased((now - rise - hold) / fall));

    HazeLight light;
    const bool moon = random.unit() < 0.35F;
    const auto width = static_cast<float>(layout.width);
    const auto shore = static_cast<float>(layout.shore);
    light.x = width * (random.between(0.15F, 0.85F) + 0.02F * now);
    light.y = shore * (moon ? random.between(0.05F, 0.25F) : random.between(0.86F, 1.0F));
    light.radius = layout.unit * random.between(0.45F, 0.60F);
    light.color = moon ? LightColor{1.0F, 1.08F, 1.42F} : LightColor{1.0F, 0.62F, 0.42F};
    light.everywhere = 0.05F;
    light.meanRed = random.between(0.100F, 0.115F) * share;
    return light;
}

} // namespace skyflare
