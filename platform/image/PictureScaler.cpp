#include "platform/image/PictureScaler.h"

#include <algorithm>

namespace skyflare {

namespace {

constexpr int bytesPerPixel = 3;
constexpr int whole = MixedColumns::whole;
constexpr std::uint64_t inEachLane = 0x0001'0001'0001'0001;

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
    columns_ = {};
    for (int x = 0; x < width; ++x) {
        const auto column = between(x, width, pictureWidth);
        columns_.first.push_back(column.first * bytesPerPixel);
        columns_.weights.push_back(static_cast<std::uint64_t>(column.weight) * inEachLane);
    }
}

void PictureScaler::scale(const PictureRows &picture, Target target)
{
    prepareColumns(target.width, picture.width());
    const std::size_t rowBytes = picture.rowBytes();
    mixed_.resize(rowBytes + mixedRowPadding);
    for (CachedRow &cached : cached_) {
        cached.y = -1;
        cached.room.resize(rowBytes);
    }
    for (int y = 0; y < target.height; ++y) {
        const Between rows = between(y, target.height, picture.height());
        const auto *first = row(picture, rows.first, rows.second);
        const auto *second = row(picture, rows.second, rows.first);
        mixRows({first, rowBytes}, {second, rowBytes}, rows.weight, std::span(mixed_).first(rowBytes));
        mixColumns(mixed_, columns_,
                   target.pixels.subspan(static_cast<std::size_t>(target.stride * y),
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

} // namespace skyflare
