#include "platform/camera/sky/NightScene.h"

#include "platform/camera/sky/Bt709.h"
#include "platform/camera/sky/Canvas.h"
#include "platform/camera/sky/CityPainter.h"
#include "platform/camera/sky/SkyRandom.h"
#include "platform/camera/sky/SmokeField.h"

#include <cmath>

namespace skyflare {

namespace {

constexpr LightColor zenith{0.012F, 0.018F, 0.055F};
constexpr LightColor horizon{0.052F, 0.052F, 0.125F};
constexpr LightColor cityGlow{0.235F, 0.118F, 0.055F};
constexpr LightColor farWater{0.020F, 0.022F, 0.036F};
constexpr LightColor nearWater{0.008F, 0.011F, 0.022F};

} // namespace

NightScene::NightScene(const SceneLayout &layout, std::uint64_t seed)
    : layout_(layout), width_(static_cast<std::size_t>(layout.width)), chromaWidth_((width_ + 1) / 2)
{
    Canvas canvas(layout.width, layout.height);
    paintSky(canvas, seed);
    paintStars(canvas, seed);
    CityPainter(canvas, layout, seed).paint();
    keepColors(canvas);
    keepSkyline(canvas);
}

void NightScene::paintSky(Canvas &canvas, std::uint64_t seed) const
{
    const SmokeField clouds(seed ^ 0xC10DU);
    const auto shore = static_cast<float>(layout_.shore);
    const auto width = static_cast<float>(layout_.width);
    const float brightest = width * unitOf(seed, 0x610EU);
    for (int y = 0; y < layout_.height; ++y) {
        const float below =
            (static_cast<float>(y) - shore) / std::max(1.0F, static_cast<float>(layout_.height) - shore);
        const float up = std::max(0.0F, (shore - static_cast<float>(y)) / shore);
        const float glow = std::exp(-up * 6.5F);
        const LightColor air = mixed(zenith, horizon, std::pow(1.0F - std::min(up, 1.0F), 1.6F));
        for (int x = 0; x < layout_.width; ++x) {
            if (y >= layout_.shore) {
                canvas.color(x, y) = mixed(farWater, nearWater, std::sqrt(below));
                continue;
            }
            const float across = (static_cast<float>(x) - brightest) / width;
            const float cloud = clouds.at(static_cast<float>(x) / (layout_.unit * 1.9F),
                                          static_cast<float>(y) / (layout_.unit * 0.8F));
            const float strength =
                glow * (0.62F + 0.38F / (1.0F + 5.0F * across * across)) * (0.72F + 0.56F * cloud);
            canvas.color(x, y) = air * (0.86F + 0.28F * cloud) + cityGlow * strength;
        }
    }
}

void NightScene::paintStars(Canvas &canvas, std::uint64_t seed) const
{
    SkyRandom random(seed, 0x57A2U);
    for (int i = 0; i < 210; ++i) {
        const float x = random.unit() * static_cast<float>(layout_.width);
        const float height = random.unit() * random.unit();
        const float y = height * 0.86F * static_cast<float>(layout_.shore);
        const float size = random.unit();
        const float strength = (0.10F + 0.55F * size * size * size) * (1.0F - height);
        const LightColor tint = mixed({0.80F, 0.88F, 1.0F}, {1.0F, 0.86F, 0.70F}, random.unit());
        canvas.addGlow(x, y, (0.0009F + 0.0011F * size) * layout_.unit, tint * strength);
    }
}

void NightScene::keepColors(const Canvas &canvas)
{
    const int chromaHeight = (layout_.height + 1) / 2;
    luma_.resize(width_ * static_cast<std::size_t>(layout_.height));
    cb_.resize(chromaWidth_ * static_cast<std::size_t>(chromaHeight));
    cr_.resize(cb_.size());
    std::vector<int> sums(cb_.size() * 3); // Cb, Cr and how many
    for (int y = 0; y < layout_.height; ++y) {
        for (int x = 0; x < layout_.width; ++x) {
            const YCbCr64 pixel = bt709(canvas.color(x, y));
            const std::size_t place = static_cast<std::size_t>(y) * width_ + static_cast<std::size_t>(x);
            luma_[place] = static_cast<std::int16_t>(16 * 64 + pixel.luma);
            const std::size_t quad =
                static_cast<std::size_t>(y / 2) * chromaWidth_ + static_cast<std::size_t>(x / 2);
            sums[quad * 3] += pixel.cb;
            sums[quad * 3 + 1] += pixel.cr;
            sums[quad * 3 + 2] += 1;
        }
    }
    for (std::size_t quad = 0; quad < cb_.size(); ++quad) {
        const int count = sums[quad * 3 + 2];
        cb_[quad] = static_cast<std::int16_t>(128 * 64 + sums[quad * 3] / count);
        cr_[quad] = static_cast<std::int16_t>(128 * 64 + sums[quad * 3 + 1] / count);
    }
}

void NightScene::keepSkyline(const Canvas &canvas)
{
    skyline_.assign(width_, layout_.shore);
    int first = layout_.shore;
    for (int x = 0; x < layout_.width; ++x) {
        for (int y = layout_.shore - 1; y >= 0; --y) {
            const float open = canvas.openness(x, y);
            // The tip of a mast is open sky for the most part; nothing stands above open sky.
            if (open > 0.99F)
                break;
            if (open < 0.6F)
                skyline_[static_cast<std::size_t>(x)] = y;
            first = std::min(first, y);
        }
    }
    firstCovered_ = first / 2 * 2;
    const auto fixed = [](float open) { return static_cast<std::int16_t>(std::lrint(open * 32767.0F)); };
    for (int y = firstCovered_; y < layout_.shore; ++y) {
        for (int x = 0; x < layout_.width; ++x)
            openness_.push_back(fixed(canvas.openness(x, y)));
        for (int x = 0; y % 2 == 0 && x < layout_.width; x += 2)
            chromaOpenness_.push_back(fixed(canvas.openness(x, y)));
    }
}

const std::int16_t *NightScene::lumaRow(int row) const
{
    return luma_.data() + static_cast<std::size_t>(row) * width_;
}

const std::int16_t *NightScene::cbRow(int row) const
{
    return cb_.data() + static_cast<std::size_t>(row) * chromaWidth_;
}

const std::int16_t *NightScene::crRow(int row) const
{
    return cr_.data() + static_cast<std::size_t>(row) * chromaWidth_;
}

const std::int16_t *NightScene::openness(int row) const
{
    if (row < firstCovered_ || row >= layout_.shore)
        return nullptr;
    return openness_.data() + static_cast<std::size_t>(row - firstCovered_) * width_;
}

const std::int16_t *NightScene::chromaOpenness(int row) const
{
    if (row * 2 < firstCovered_ || row * 2 >= layout_.shore)
        return nullptr;
    return chromaOpenness_.data() + static_cast<std::size_t>(row - firstCovered_ / 2) * chromaWidth_;
}

} // namespace skyflare
