#pragma once

#include "platform/image/PictureRows.h"
#include "platform/image/RowMix.h"

#include <cstdint>
#include <span>
#include <vector>

namespace skyflare {

/// Makes a smaller or larger picture of another by interpolating between its nearest pixels: good enough to
/// look at, and fast. Only the rows that are needed are asked for, each once.
///
/// Threads: one at a time.
class PictureScaler {
public:
    /// Where the result goes: 0xFFRRGGBB, `stride` pixels from one row to the next.
    struct Target {
        std::span<std::uint32_t> pixels;
        int width = 0;
        int height = 0;
        std::ptrdiff_t stride = 0;
    };

    void scale(const PictureRows &picture, Target target);

private:
    /// Between which two pixels of the picture one of the result lies, and how near to the second, of 256.
    struct Between {
        int first = 0;
        int second = 0;
        int weight = 0;
    };
    struct CachedRow {
        int y = -1;
        std::vector<std::uint8_t> room;
        const std::uint8_t *rgb = nullptr;
    };

    static Between between(int position, int size, int pictureSize);
    void prepareColumns(int width, int pictureWidth);
    const std::uint8_t *row(const PictureRows &picture, int y, int keep);

    int width_ = 0;
    int pictureWidth_ = 0;
    MixedColumns columns_;
    CachedRow cached_[2];
    std::vector<std::uint8_t> mixed_; ///< one row of the picture, between two of its own, and its padding
};

} // namespace skyflare
