#include "platform/image/PictureScaler.h"

#include <algorithm>

namespace skyflare {

namespace {

constexpr int bytesPerPixel = 3;
constexpr int whole = 256; // of a weight

} // namespace

PictureScaler::Between PictureScaler::between(int position, int size, int pictureSize)
{
    // The middle of a pixel of the result, in 1/256 of a pixel of the picture, from the middle of its first.
    const std::int64_t middle =
        (std::int64_t{2} * position + 1) * pictureSize * (whole / 2) / size - whole / 2;
    const std::int64_t limited = std::clamp<std::int64_t>(middle, 0, (std::int64_t{pictureSize} - 1) * whole);
    const int first = static_cast<int>(limited / whole);
    return {first, std::min(first + 1, pictureSize - 1), static_cast<int>(limited % whole)};
}

void PictureScaler::prepareColumns(int width, int pictureWidth)
{
    if (width_ == width && pictureWidth_ == pictureWidth)
        return;
    width_ = width;
    pictureWidth_ = pictureWidth;
    columns_.resize(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x) {
        auto column = between(x, width, pictureWidth);
        column.first *= bytesPerPixel;
        column.second *= bytesPerPixel;
        columns_[static_cast<std::size_t>(x)] = column;
    }
}

void PictureScaler::scale(const PictureRows &picture, Target target)
{
    prepareColumns(target.width, picture.width());
    mixed_.resize(picture.rowBytes());
    for (CachedRow &cached : cached_) {
        cached.y = -1;
        cached.room.resize(picture.rowBytes());
    }
    for (int y = 0; y < target.height; ++y) {
        const Between rows = between(y, target.height, picture.height());
        const auto *first = row(picture, rows.first, rows.second);
        const auto *second = row(picture, rows.second, rows.first);
        mixRows(first, second, rows.weight);
        mixColumns(target.pixels.subspan(static_cast<std::size_t>(target.stride * y),
                                         static_cast<std::size_t>(target.width)));
    }
}

/// Row `y` of the picture, out of the cache or into it, where row `keep` stays.
const std::uint8_t *PictureScaler::row(const PictureRows &picture, int y, int keep)
{
    for (const CachedRow &cached : cached_) {
        if (cached.y == y)
            return cached.rgb;
    }
    CachedRow &free = cached_[0].y == keep ? cached_[1] : cached_[0];
    free.y = y;
    free.rgb = picture.row(y, free.room);
    return free.rgb;
}

void PictureScaler::mixRows(const std::uint8_t *first, const std::uint8_t *second, int weight)
{
    std::uint8_t *mixed = mixed_.data();
    const auto size = mixed_.size();
    // 16-bit lanes, so that the compiler takes many at a time.
    const auto two = static_cast<std::uint16_t>(weight);
    const auto one = static_cast<std::uint16_t>(whole - weight);
    for (std::size_t i = 0; i < size; ++i)
        mixed[i] = static_cast<std::uint8_t>(
            static_cast<std::uint16_t>(first[i] * one + second[i] * two + whole / 2) >> 8);
}

void PictureScaler::mixColumns(std::span<std::uint32_t> result) const
{
    for (std::size_t x = 0; x < result.size(); ++x) {
        const Between &column = columns_[x];
        const std::uint8_t *a = mixed_.data() + column.first;
        const std::uint8_t *b = mixed_.data() + column.second;
        const int two = column.weight;
        const int one = whole - two;
        const auto mix = [&](int channel) {
            return static_cast<std::uint32_t>(a[channel] * one + b[channel] * two + whole / 2) >> 8;
        };
        result[x] = 0xFF000000U | mix(0) << 16 | mix(1) << 8 | mix(2);
    }
}

} // namespace skyflare
