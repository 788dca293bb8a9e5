#include "platform/camera/sky/Shell.h"

#include "platform/camera/sky/HazeGrid.h"
#include "platform/camera/sky/LightBuffer.h"
#include "platform/camera/sky/RisingTrail.h"
#include "platform/camera/sky/SkyRandom.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skyflare {

namespace {

constexpr float openShutterSeconds = 0.110F; ///< the first frame of a burst shows this much of its flight
constexpr float flashDecaySeconds = 0.085F;
constexpr float windUnitsPerSecond = 0.010F;
constexpr int trailPieces = 9;
constexpr float pi = 3.14159265F;

constexpr LightColor hot{1.0F, 0.90F, 0.74F};
constexpr LightColor charcoal{1.0F, 0.50F, 0.16F};

float smoothStep(float from, float to, float value)
{
    const float share = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
    return share * share * (3.0F - 2.0F * share);
}

} // namespace

/// What all stars of a shell have in common at one moment: how far along their ways they and the glow that
/// they have left behind are.
struct Shell::Flight {
    struct Point {
        float reach = 0;  ///< share of a star's own reach
        float fallen = 0; ///< pixels
        float blown = 0;  ///< pixels
        float glow = 0;   ///< of the trail
    };
    float age = 0; ///< seconds
    std::array<Point, trailPieces + 1> points{};
};

Shell::Shell(const ShellPlan &plan, const SceneLayout &layout)
    : plan_(plan),
      layout_(layout),
      centerX_(plan.x * static_cast<float>(layout.width)),
      centerY_(plan.y * static_cast<float>(layout.shore))
{
    makeStars();
}

void Shell::makeStars()
{
    SkyRandom random(plan_.id, 1);
    // A ring lies in a plane of its own.
    const float turn = random.between(0, 2 * pi);
    const float tilt = random.between(0.15F, 0.5F) * pi;
    const float axes[2][3] = {
        {std::cos(turn), std::sin(turn), 0},
        {-std::sin(turn) * std::cos(tilt), std::cos(turn) * std::cos(tilt), std::sin(tilt)}};
    const int count = plan_.flashes ? plan_.kind->stars : plan_.kind->stars * 2 / 3;
    stars_.resize(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number)
        placeStar(stars_[static_cast<std::size_t>(number)], number, random, axes);
}

void Shell::placeStar(Star &star, int number, SkyRandom &random, const float (&axes)[2][3]) const
{
    const ShellKind &kind = *plan_.kind;
    const float share = (static_cast<float>(number) + 0.5F) / static_cast<float>(stars_.size());
    star.id = random.bits();
    star.inPistil = unitOf(star.id, 1) < kind.pistil;
    star.life = kind.lifeSeconds * (1.0F + kind.lifeSpread * random.between(-1, 1));
    float speed = 1.0F + 0.045F * random.bell();
    // The golden angle spreads any number of points evenly over a ball.
    const float height = 1.0F - 2.0F * share;
    const float around = static_cast<float>(number) * 2.3999632F + 0.12F * random.bell();
    const float level = std::sqrt(std::max(0.0F, 1.0F - height * height));
    float x = level * std::cos(around);
    float y = height;
    float depth = level * std::sin(around);
    if (kind.arrangement == ShellKind::Arrangement::Ring && !star.inPistil) {
        const float angle = 2 * pi * share;
        x = std::cos(angle) * axes[0][0] + std::sin(angle) * axes[1][0];
        y = std::cos(angle) * axes[0][1] + std::sin(angle) * axes[1][1];
        depth = std::cos(angle) * axes[0][2] + std::sin(angle) * axes[1][2];
    } else if (kind.arrangement == ShellKind::Arrangement::Palm) {
        speed *= random.between(0.75F, 1.05F);
        y = 0.62F * y - 0.30F; // mostly upwards: the arms bend down by themselves
    }
    if (star.inPistil)
        speed *= 0.46F;
    const float reach = plan_.radius * layout_.unit * speed * (1.0F + 0.10F * depth);
    star.reachX = x * reach;
    star.reachY = y * reach;
    star.strength = kind.strength * (1.0F + 0.22F * depth) * random.between(0.75F, 1.15F);
}

Shell::Flight Shell::flightAt(float age) const
{
    const ShellKind &kind = *plan_.kind;
    Flight flight;
    flight.age = age;
    const float trail = std::min(kind.trailSeconds, age);
    for (int i = 0; i <= trailPieces; ++i) {
        // Pieces are short near the star, where the trail bends and fades most.
        const float along = static_cast<float>(i) / trailPieces;
        const float lag = trail * along * (0.45F + 0.55F * along);
        const float then = std::max(0.0F, age - lag);
        const float flown = (1.0F - std::exp(-kind.drag * then)) / kind.drag;
        const float left = std::max(0.0F, 1.0F - lag / (kind.trailSeconds + 0.001F));
        Flight::Point &point = flight.points[static_cast<std::size_t>(i)];
        point.reach = flown * kind.drag;
        point.fallen = layout_.unit * (kind.gravity / kind.drag * (then - flown) + 0.012F * lag * lag);
        point.blown = layout_.unit * windUnitsPerSecond * (then - flown + lag);
        point.glow = left * left;
    }
    return flight;
}

LightColor Shell::starColor(const Star &star, float age) const
{
    const LightColor own = star.inPistil ? plan_.pistilColor : plan_.color;
    const LightColor later = star.inPistil ? plan_.pistilColor : plan_.laterColor;
    const LightColor now = mixed(own, later, smoothStep(0.42F, 0.56F, age / star.life));
    const LightColor color = mixed(hot, now, smoothStep(0.0F, 0.22F, age));
    const float fade = 1.0F - smoothStep(0.62F, 1.0F, age / star.life);
    const float soft = plan_.flashes ? 1.0F : smoothStep(0.0F, 0.35F, age);
    const float burning = 1.0F + 0.9F * std::exp(-age * 4.0F);
    // Toward their end stars flicker.
    const auto instant = static_cast<std::uint64_t>(age * 22.0F);
    const float flicker =
        mixed({1, 1, 1}, {1.7F * unitOf(star.id, instant), 0, 0}, smoothStep(0.45F, 0.9F, age / star.life))
            .red;
    return color * (star.strength * fade * soft * burning * flicker);
}

void Shell::drawFlash(float sinceBreak, LightBuffer &light, HazeGrid &haze) const
{
    const LightColor tint = mixed({1.0F, 0.66F, 0.42F}, plan_.color, 0.40F);
    // Only red is measured: a colour without it would have to light the sky up like day.
    const float green = std::clamp(tint.green / tint.red, 0.50F, 0.80F);
    const float blue = std::clamp(tint.blue / tint.red, 0.32F, 0.95F);
    const float radius = plan_.radius * 1.25F * layout_.unit;
    const float flash = std::exp(-sinceBreak / flashDecaySeconds);
    if (plan_.flashes && flash > 0.002F) {
        haze.addLight({centerX_, centerY_, radius, {1.0F, green, blue}, plan_.flashMeanRed * flash, 0.08F});
        light.addSpot(centerX_, centerY_, 0.040F * layout_.unit,
                      LightColor{1.0F, 0.86F, 0.66F} * (2.6F * flash));
    }
    // What the stars themselves light up has their colour.
    const float opening = smoothStep(0.0F, plan_.flashes ? 0.12F : 0.50F, sinceBreak);
    const float glow = 0.020F * opening * std::exp(-sinceBreak / 0.9F);
    if (glow > 0.0004F)
        haze.addLight({centerX_, centerY_, radius, plan_.color, glow * plan_.color.red, 0.03F});
}

void Shell::drawSmoke(float sinceBreak, HazeGrid &haze) const
{
    const float density = smoothStep(0.0F, 0.8F, sinceBreak) * std::exp(-sinceBreak / 2.4F) *
                          (1.0F - smoothStep(4.5F, 6.0F, sinceBreak));
    haze.addPuff({centerX_ + windUnitsPerSecond * 2.5F * sinceBreak * layout_.unit,
                  centerY_ + 0.012F * sinceBreak * layout_.unit,
                  plan_.radius * (0.55F + 0.14F * sinceBreak) * layout_.unit, density});
}

void Shell::drawStar(const Star &star, const Flight &flight, LightBuffer &light, HazeGrid &haze) const
{
    const ShellKind &kind = *plan_.kind;
    const LightColor color = starColor(star, flight.age);
    const auto xAt = [&](const Flight::Point &point) {
        return centerX_ + star.reachX * point.reach + point.blown;
    };
    const auto yAt = [&](const Flight::Point &point) {
        return centerY_ + star.reachY * point.reach + point.fallen;
    };
    const float peak = std::max({color.red, color.green, color.blue});
    if (peak < 0.01F)
        return;
    const LightColor trailColor = kind.goldTrail ? mixed(color, charcoal * peak, 0.75F) : color;
    const float trailStrength = kind.goldTrail ? 0.46F : 0.50F;
    for (std::size_t i = 0; i < trailPieces; ++i) {
        const Flight::Point &newer = flight.points[i];
        const Flight::Point &older = flight.points[i + 1];
        light.addStreak(xAt(newer), yAt(newer), xAt(older), yAt(older),
                        mixed(color, trailColor, i == 0 ? 0.0F : 1.0F) * (trailStrength * newer.glow),
                        trailColor * (trailStrength * older.glow));
    }
    const float x = xAt(flight.points[0]);
    const float y = yAt(flight.points[0]);
    light.addSpot(x, y, kind.headRadius * layout_.unit, color * 1.5F);
    light.addSpot(x, y, kind.headRadius * 2.1F * layout_.unit, color * 0.18F);
    // Close together they would light up their air like a sun.
    const float apart = smoothStep(0.0F, 0.8F, flight.points[0].reach);
    haze.addHalo(x, y, color * (0.000055F * apart * layout_.unit * layout_.unit));
    if (kind.glitter)
        drawGlitter(star, flight, trailColor, light);
}

void Shell::drawGlitter(const Star &star, const Flight &flight, LightColor color, LightBuffer &light) const
{
    const ShellKind &kind = *plan_.kind;
    constexpr float step = 0.055F; // seconds between two sparks
    const int last = static_cast<int>(flight.age / step);
    const int first = std::max(1, static_cast<int>((flight.age - kind.trailSeconds) / step) + 1);
    const auto instant = static_cast<std::uint64_t>(flight.age * 16.0F);
    for (int spark = first; spark <= last; ++spark) {
        const auto number = static_cast<std::uint64_t>(spark);
        const float blink = unitOf(star.id + number, instant);
        if (blink < 0.45F)
            continue;
        const float then = static_cast<float>(spark) * step;
        const float lag = flight.age - then;
        const float left = 1.0F - lag / kind.trailSeconds;
        const float flown = (1.0F - std::exp(-kind.drag * then)) / kind.drag;
        const float aside = (unitOf(star.id, number) - 0.5F) * 0.010F * layout_.unit;
        const float x = centerX_ + star.reachX * flown * kind.drag + aside;
        const float y = centerY_ + star.reachY * flown * kind.drag +
                        layout_.unit * (kind.gravity / kind.drag * (then - flown) + 0.030F * lag * lag);
        light.addSpot(x, y, 0.0019F * layout_.unit, color * (1.5F * left * blink));
    }
}

void Shell::drawCrackle(const Star &star, const Flight &flight, LightBuffer &light, HazeGrid &haze) const
{
    constexpr int reports = 3;
    constexpr float shownSeconds = 0.085F;
    for (std::uint64_t report = 0; report < reports; ++report) {
        const float at = star.life * (0.62F + 0.55F * unitOf(star.id, 70 + report));
        const float since = flight.age - at;
        if (since < 0 || since > shownSeconds)
            continue;
        const float left = 1.0F - since / shownSeconds;
        const float spread = 0.018F * layout_.unit;
        const float x =
            centerX_ + star.reachX * flight.points[0].reach + (unitOf(star.id, 80 + report) - 0.5F) * spread;
        const float y = centerY_ + star.reachY * flight.points[0].reach + flight.points[0].fallen +
                        (unitOf(star.id, 90 + report) - 0.5F) * spread;
        constexpr LightColor reportLight{1.0F, 0.90F, 0.70F};
        light.addSpot(x, y, 0.0036F * layout_.unit, reportLight * (3.0F * left));
        haze.addHalo(x, y, reportLight * (0.00010F * left * layout_.unit * layout_.unit));
    }
}

void Shell::draw(double seconds, LightBuffer &light, HazeGrid &haze) const
{
    const auto sinceBreak = static_cast<float>(seconds - plan_.breakSeconds);
    drawRisingTrail(plan_, layout_, sinceBreak, light, haze);
    if (sinceBreak < 0)
        return;
    drawFlash(sinceBreak, light, haze);
    drawSmoke(sinceBreak, haze);
    const Flight flight = flightAt(sinceBreak + openShutterSeconds);
    for (const Star &star : stars_) {
        if (flight.age < star.life)
            drawStar(star, flight, light, haze);
        if (plan_.kind->crackles)
            drawCrackle(star, flight, light, haze);
    }
}

} // namespace skyflare
