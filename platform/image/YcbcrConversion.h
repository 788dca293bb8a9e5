#pragma once

#include "platform/image/VideoFrame.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace skyflare {

/// The weights of red and blue in luma, from which a matrix follows; green has the rest.
struct LumaWeights {
    double red;
    double blue;
};

inline constexpr std::array<LumaWeights, 3> lumaWeights{{
    {0.299, 0.114},   // ColorMatrix::Bt601: ITU-R BT.601-7, 2.5.1
    {0.2126, 0.0722}, // ColorMatrix::Bt709: ITU-R BT.709-6, 3.2
    {0.2627, 0.0593}, // ColorMatrix::Bt2020: ITU-R BT.2020-2, table 4
}};

/// YCbCr to 8-bit R, G, B in whole numbers.
///
/// The formulas are those of the Recommendations: R = Y + 2(1-Kr)·Cr, B = Y + 2(1-Kb)·Cb, and G from
/// Y = Kr·R + Kg·G + Kb·B; Y and chroma are stretched from 16…235 and 16…240 where the range is limited.
///
/// The arithmetic is that of 16-bit lanes, so that a vector version gives the same bits: a product is
/// (a × b + 2^14) >> 15, sums are in 1/64 of a step, and what overflows 16 bits lies beyond 255 anyway.
/// Against the exact formula a channel is off by less than 0.53 for red and blue and 0.54 for green, of
/// which 0.5 is the rounding to 8 bits.
struct YcbcrConversion {
    int luma = 0;     ///< in 1/2^14
    int offset = 0;   ///< in 1/64: takes the black level off and rounds the sum
    int redPerCr = 0; ///< in 1/2^13, as the three below
    int greenPerCb = 0;
    int greenPerCr = 0;
    int bluePerCb = 0;

    /// What a luma sample brings to all three channels.
    [[nodiscard]] constexpr int lumaTerm(int y) const { return product(y * 128, luma) + offset; }
    /// What a chroma sample brings to a channel that takes `perSample` of it.
    static constexpr int chromaTerm(int sample, int perSample)
    {
        return product((sample - 128) * 256, perSample);
    }
    /// A sum of terms as a channel, 0 to 255.
    static constexpr int channel(int terms)
    {
        const int value = terms >> 6;
        return value < 0 ? 0 : value > 255 ? 255 : value;
    }

    [[nodiscard]] constexpr int redOf(int y, int cr) const
    {
        return channel(lumaTerm(y) + chromaTerm(cr, redPerCr));
    }
    [[nodiscard]] constexpr int greenOf(int y, int cb, int cr) const
    {
        return channel(lumaTerm(y) + chromaTerm(cb, greenPerCb) + chromaTerm(cr, greenPerCr));
    }
    [[nodiscard]] constexpr int blueOf(int y, int cb) const
    {
        return channel(lumaTerm(y) + chromaTerm(cb, bluePerCb));
    }

private:
    /// Both fit into 16 bits, which a compiler that knows of it multiplies several at a time.
    static constexpr int product(int a, int b)
    {
        return (static_cast<std::int16_t>(a) * static_cast<std::int16_t>(b) + (1 << 14)) >> 15;
    }
};

constexpr YcbcrConversion ycbcrConversion(ColorMatrix matrix, ColorRange range)
{
    const auto rounded = [](double x) { return static_cast<int>(x < 0 ? x - 0.5 : x + 0.5); };
    const LumaWeights k = lumaWeights[static_cast<std::size_t>(matrix)];
    const bool limited = range == ColorRange::Limited;
    const double lumaScale = limited ? 255.0 / 219 : 1;
    const double chromaScale = (limited ? 255.0 / 224 : 1) * (1 << 13);
    const double green = 1 - k.red - k.blue;
    return {.luma = rounded(lumaScale * (1 << 14)),
            .offset = 32 - (limited ? rounded(lumaScale * 16 * 64) : 0),
            .redPerCr = rounded(2 * (1 - k.red) * chromaScale),
            .greenPerCb = rounded(-2 * (1 - k.blue) * k.blue / green * chromaScale),
            .greenPerCr = rounded(-2 * (1 - k.red) * k.red / green * chromaScale),
            .bluePerCb = rounded(2 * (1 - k.blue) * chromaScale)};
}

/// Where a YCbCr format keeps its samples. Two pixels of a row share one chroma sample.
struct YcbcrLayout {
    std::size_t lumaStep = 1;
    std::size_t lumaOffset = 0;
    std::size_t chromaStep = 1;
    std::size_t cbPlane = 0;
    std::size_t cbOffset = 0;
    std::size_t crPlane = 0;
    std::size_t crOffset = 0;
    int rowsPerChromaRow = 1;
};

inline constexpr YcbcrLayout nv12Layout{1, 0, 2, 1, 0, 1, 1, 2};
inline constexpr YcbcrLayout i420Layout{1, 0, 1, 1, 0, 2, 0, 2};
inline constexpr YcbcrLayout yuy2Layout{2, 0, 4, 0, 1, 0, 3, 1};
inline constexpr YcbcrLayout uyvyLayout{2, 1, 4, 0, 0, 0, 2, 1};

/// The samples of one row.
struct YcbcrRow {
    const std::uint8_t *y;
    const std::uint8_t *cb;
    const std::uint8_t *cr;
};

template <YcbcrLayout layout> YcbcrRow ycbcrRow(const VideoFrame &frame, int row)
{
    const auto at = [&frame](std::size_t plane, int planeRow, std::size_t offset) {
        return frame.planes[plane].data + frame.planes[plane].stride * planeRow + offset;
    };
    const int chromaRow = row / layout.rowsPerChromaRow;
    return {at(0, row, layout.lumaOffset), at(layout.cbPlane, chromaRow, layout.cbOffset),
            at(layout.crPlane, chromaRow, layout.crOffset)};
}

} // namespace skyflare
