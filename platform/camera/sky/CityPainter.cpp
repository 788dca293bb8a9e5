#include "platform/camera/sky/CityPainter.h"

#include <cmath>

namespace skyflare {

/// One row of houses; lengths are shares of the scene's unit.
struct CityPainter::Row {
    LightColor wall;
    float openness;          ///< how much of the sky's light the haze before it takes on
    float narrowest, widest; ///< a house
    float lowest, highest;   ///< a house
    float windowLight;       ///< brightest window
    float litShare;          ///< of the windows
    float hills;             ///< how often the skyline rises and falls across the picture
};

namespace {

constexpr LightColor lampLight{1.0F, 0.66F, 0.34F};
constexpr LightColor warmWindow{1.0F, 0.72F, 0.40F};
constexpr LightColor coolWindow{0.75F, 0.85F, 1.0F};

} // namespace

CityPainter::CityPainter(Canvas &canvas, const SceneLayout &layout, std::uint64_t seed)
    : canvas_(canvas), layout_(layout), random_(seed, 0xC17AU)
{
}

void CityPainter::paint()
{
    static constexpr Row rows[] = {
        {{0.046F, 0.044F, 0.066F}, 0.42F, 0.014F, 0.040F, 0.030F, 0.150F, 0.24F, 0.16F, 2.3F},
        {{0.017F, 0.018F, 0.030F}, 0.13F, 0.020F, 0.055F, 0.016F, 0.088F, 0.66F, 0.30F, 3.1F},
    };
    for (const Row &row : rows) {
        paintRow(row);
        if (&row == &rows[0])
            paintTower();
    }
    paintLamps();
}

void CityPainter::paintRow(const Row &row)
{
    const auto shore = static_cast<float>(layout_.shore);
    const float phase = random_.between(0, 6.28F);
    float left = -random_.between(0, row.widest) * layout_.unit;
    while (left < static_cast<float>(layout_.width)) {
        const float right = left + std::max(1.0F, random_.between(row.narrowest, row.widest) * layout_.unit);
        const float across = left / static_cast<float>(layout_.width);
        const float hill = 0.5F + 0.5F * std::sin(phase + across * row.hills * 6.28F);
        // Most houses are low; a few of them stand out where the skyline is high.
        const float rise = random_.unit() * random_.unit() * (0.35F + 0.65F * hill) + 0.25F * hill;
        const House house{left, right,
                          shore - (row.lowest + (row.highest - row.lowest) * rise) * layout_.unit};
        canvas_.fillRectangle(house.left, house.top, house.right, shore, row.wall, row.openness);
        paintRoof(house, row);
        paintWindows(house, row);
        left = right + (random_.unit() < 0.12F ? random_.between(0.006F, 0.016F) * layout_.unit : 0.0F);
    }
}

void CityPainter::paintRoof(const House &house, const Row &row)
{
    const float middle = (house.left + house.right) / 2;
    const float kind = random_.unit();
    if (kind < 0.22F) { // a mast
        canvas_.fillRectangle(middle, house.top - random_.between(0.012F, 0.030F) * layout_.unit,
                              middle + 0.0014F * layout_.unit, house.top, row.wall, row.openness);
    } else if (kind < 0.50F) { // a smaller storey on top
        const float inset = (house.right - house.left) * random_.between(0.15F, 0.35F);
        canvas_.fillRectangle(house.left + inset, house.top - random_.between(0.004F, 0.014F) * layout_.unit,
                              house.right - inset, house.top, row.wall, row.openness);
    }
}

void CityPainter::paintWindows(const House &house, const Row &row)
{
    const float width = 0.0024F * layout_.unit;
    const float height = 0.0030F * layout_.unit;
    const float lit = row.litShare * random_.between(0.2F, 1.7F);
    const float bottom = static_cast<float>(layout_.shore) - 0.010F * layout_.unit;
    for (float y = house.top + 2 * height; y < bottom; y += 2.4F * height) {
        for (float x = house.left + width; x + 2 * width < house.right; x += 2.3F * width) {
            if (random_.unit() > lit)
                continue;
            const LightColor light = random_.unit() < 0.8F ? warmWindow : coolWindow;
            const float strength = row.windowLight * random_.between(0.2F, 1.0F);
            canvas_.fillRectangle(x, y, x + width, y + height, light * strength, row.openness);
        }
    }
}

void CityPainter::paintTower()
{
    const auto shore = static_cast<float>(layout_.shore);
    const float unit = layout_.unit;
    const float x = static_cast<float>(layout_.width) * random_.between(0.62F, 0.80F);
    const float top = shore - 0.215F * unit;
    static constexpr LightColor wall{0.032F, 0.032F, 0.050F};
    for (float y = top; y < shore; y += 1) {
        const float down = (y - top) / (shore - top);
        const float half = unit * (0.0011F + 0.0085F * down * down * down);
        canvas_.fillRectangle(x - half, y, x + half, y + 1, wall, 0.30F);
    }
    const float deck = top + 0.060F * unit;
    canvas_.fillRectangle(x - 0.008F * unit, deck, x + 0.008F * unit, deck + 0.006F * unit, wall, 0.30F);
    canvas_.fillRectangle(x - 0.007F * unit, deck + 0.002F * unit, x + 0.007F * unit, deck + 0.0035F * unit,
                          warmWindow * 0.55F, 0.30F);
    canvas_.addGlow(x, top, 0.0045F * unit, {1.3F, 0.16F, 0.10F});
    canvas_.addGlow(x, top, 0.020F * unit, {0.14F, 0.014F, 0.010F});
}

void CityPainter::paintLamps()
{
    const auto shore = static_cast<float>(layout_.shore);
    const float unit = layout_.unit;
    const float quay = shore - 0.006F * unit;
    canvas_.fillRectangle(0, quay, static_cast<float>(layout_.width), shore, {0.020F, 0.018F, 0.024F}, 0.1F);
    float x = random_.between(0, 0.02F) * unit;
    while (x < static_cast<float>(layout_.width)) {
        const float strength = random_.between(0.45F, 1.0F);
        const float y = quay - random_.between(0.0040F, 0.0075F) * unit;
        canvas_.addGlow(x, y, 0.0034F * unit, lampLight * (1.1F * strength));
        canvas_.addGlow(x, y, 0.017F * unit, lampLight * (0.19F * strength));
        x += random_.between(0.022F, 0.060F) * unit;
    }
}

} // namespace skyflare
