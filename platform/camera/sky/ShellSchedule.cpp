#include "platform/camera/sky/ShellSchedule.h"

#include "platform/camera/sky/SkyRandom.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

constexpr double shortestGapSeconds = 1.1;
constexpr double longestGapSeconds = 1.5;
constexpr double firstBurstSeconds = 0.6;
constexpr double shownAfterBreakSeconds = 6.0; ///< smoke included
constexpr double shownBeforeBreakSeconds = 1.7;
constexpr int mostCompanions = 2;

constexpr LightColor vividColors[] = {
    {1.00F, 0.13F, 0.09F}, // red
    {1.00F, 0.40F, 0.10F}, // orange
    {1.00F, 0.80F, 0.26F}, // lemon
    {0.20F, 1.00F, 0.30F}, // green
    {0.14F, 0.84F, 0.78F}, // turquoise
    {0.22F, 0.40F, 1.00F}, // blue
    {0.62F, 0.26F, 1.00F}, // violet
    {1.00F, 0.28F, 0.56F}, // pink
};
constexpr LightColor gold{1.00F, 0.60F, 0.20F};
constexpr LightColor silver{0.86F, 0.92F, 1.00F};

constexpr std::int64_t floorHalf(std::int64_t number)
{
    return (number - (number & 1)) / 2;
}

void chooseColors(ShellPlan &plan, SkyRandom &random)
{
    const int count = static_cast<int>(std::size(vividColors));
    const int first = random.below(count);
    const int second = (first + 1 + random.below(count - 1)) % count;
    switch (plan.kind->palette) {
    case ShellKind::Palette::Vivid:
        plan.color = vividColors[first];
        break;
    case ShellKind::Palette::Gold:
        plan.color = gold;
        break;
    case ShellKind::Palette::Silver:
        plan.color = silver;
        break;
    }
    const bool changes = plan.kind->palette == ShellKind::Palette::Vivid && random.unit() < 0.4F;
    plan.laterColor = changes ? vividColors[second] : plan.color;
    plan.pistilColor = random.unit() < 0.35F ? silver : vividColors[second];
}

} // namespace

ShellSchedule::ShellSchedule(double framesPerSecond, std::uint64_t seed)
    : framesPerSecond_(framesPerSecond), seed_(spreadBits(seed ^ 0x5C4EDU))
{
    const double hair = 1e-6; // 1.1 s at 30 a second are 33 frames, whatever the rounding says
    shortestGap_ = static_cast<std::int64_t>(std::ceil(shortestGapSeconds * framesPerSecond - hair));
    longestGap_ = static_cast<std::int64_t>(std::floor(longestGapSeconds * framesPerSecond + hair));
    longestGap_ = std::max(longestGap_, shortestGap_);
    jitter_ = (longestGap_ - shortestGap_) / 4;
    offset_ = static_cast<std::int64_t>(std::lround(firstBurstSeconds * framesPerSecond));
}

std::int64_t ShellSchedule::evenFrame(std::int64_t index) const
{
    return floorHalf(index * (shortestGap_ + longestGap_)) + offset_;
}

std::int64_t ShellSchedule::burstFrame(std::int64_t index) const
{
    SkyRandom random(seed_, 1, static_cast<std::uint64_t>(index));
    const int steps = static_cast<int>(2 * jitter_ + 1);
    return evenFrame(index) + random.below(steps) - jitter_;
}

ShellPlan ShellSchedule::plan(std::int64_t index, int companion) const
{
    SkyRandom random(seed_, 2 + static_cast<std::uint64_t>(companion), static_cast<std::uint64_t>(index));
    ShellPlan plan;
    plan.id = random.bits();
    plan.flashes = companion == 0;
    plan.breakFrame = burstFrame(index);
    plan.breakSeconds = static_cast<double>(plan.breakFrame) / framesPerSecond_;
    plan.kind = &shellKinds[static_cast<std::size_t>(random.below(static_cast<int>(shellKinds.size())))];
    plan.radius = random.between(plan.kind->smallest, plan.kind->largest);
    // The golden ratio never comes back to where it was: neighbours in time are no neighbours in the sky.
    const double turn = static_cast<double>(index) * 0.6180339887 + static_cast<double>(seed_ % 1000) * 0.001;
    const auto place = static_cast<float>(turn - std::floor(turn));
    plan.x = 0.15F + 0.70F * place + random.between(-0.04F, 0.04F);
    // High, but not so high that the picture cuts it off.
    plan.y = std::max(random.between(0.30F, 0.48F), plan.radius * 1.12F);
    if (!plan.flashes) {
        plan.breakSeconds += static_cast<double>(random.between(0.12F, 0.95F));
        plan.radius *= random.between(0.45F, 0.72F);
        plan.x = 0.15F + 0.70F * std::fmod(place + random.between(0.3F, 0.7F), 1.0F);
        plan.y = random.between(0.28F, 0.62F);
    }
    plan.riseSeconds = random.between(1.1F, 1.6F);
    plan.fromX = 0.5F + (plan.x - 0.5F) * 0.8F + random.between(-0.03F, 0.03F);
    chooseColors(plan, random);
    plan.flashMeanRed = random.between(0.118F, 0.155F);
    return plan;
}

std::vector<ShellPlan> ShellSchedule::plansAt(std::int64_t frame) const
{
    const double now = static_cast<double>(frame) / framesPerSecond_;
    const auto framesOf = [this](double seconds) {
        return static_cast<std::int64_t>(std::ceil(seconds * framesPerSecond_));
    };
    const std::int64_t earliest = frame - framesOf(shownAfterBreakSeconds + 1.0);
    const std::int64_t latest = frame + framesOf(shownBeforeBreakSeconds);
    std::vector<ShellPlan> plans;
    std::int64_t index = 2 * (earliest - offset_) / (shortestGap_ + longestGap_) - 2;
    for (; evenFrame(index) - jitter_ <= latest; ++index) {
        SkyRandom random(seed_, 9, static_cast<std::uint64_t>(index));
        const int companions = random.below(mostCompanions + 1);
        for (int companion = 0; companion <= companions; ++companion) {
            const ShellPlan shell = plan(index, companion);
            if (now > shell.breakSeconds - shownBeforeBreakSeconds &&
                now < shell.breakSeconds + shownAfterBreakSeconds)
                plans.push_back(shell);
        }
    }
    return plans;
}

} // namespace skyflare
