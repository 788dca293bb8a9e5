#include "platform/image/RgbRow.h"

// This file includes itself again and again, once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/image/RgbRow.cpp"
// clang-format off: the order matters
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace skyflare::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// A vector of this machine, seen as lanes of each width.
constexpr hn::ScalableTag<std::uint8_t> u8;
constexpr hn::Repartition<std::int16_t, decltype(u8)> i16;
constexpr hn::Repartition<std::uint16_t, decltype(u8)> u16;
constexpr hn::Half<decltype(u8)> halfOfU8;

using U8 = hn::Vec<decltype(u8)>;
using I16 = hn::Vec<decltype(i16)>;
using U16 = hn::Vec<decltype(u16)>;

/// The samples of as many pairs of pixels as a vector has 16-bit lanes, as 0 to 255.
struct Pairs {
    U16 first; ///< luma of each pair's first pixel
    U16 second;
    U16 cb;
    U16 cr;
};

/// One row of a YCbCr frame as R, G, B.
template <YcbcrLayout layout> class RgbOfRow {
public:
    RgbOfRow(const VideoFrame &frame, int y, const YcbcrConversion &conversion)
        : row_(ycbcrRow<layout>(frame, y)), k_(conversion)
    {
    }

    void write(std::span<std::uint8_t> rgb) const
    {
        const std::size_t width = rgb.size() / 3;
        std::size_t x = 0;
        if constexpr (hn::MaxLanes(u8) > 1) { // not in the fallback for machines without vectors
            for (; x + hn::Lanes(u8) <= width; x += hn::Lanes(u8))
                writeVector(x, rgb.data() + 3 * x);
        }
        for (; x < width; ++x)
            writePixel(x, rgb.data() + 3 * x);
    }

private:
    void writePixel(std::size_t x, std::uint8_t *rgb) const
    {
        const int y = row_.y[x * layout.lumaStep];
        const int cb = row_.cb[x / 2 * layout.chromaStep];
        const int cr = row_.cr[x / 2 * layout.chromaStep];
        rgb[0] = static_cast<std::uint8_t>(k_.redOf(y, cr));
        rgb[1] = static_cast<std::uint8_t>(k_.greenOf(y, cb, cr));
        rgb[2] = static_cast<std::uint8_t>(k_.blueOf(y, cb));
    }

    /// As many pixels as a vector has bytes.
    HWY_INLINE void writeVector(std::size_t x, std::uint8_t *rgb) const
    {
        const Pairs pairs = pairsAt(x);
        const I16 first = lumaTerm(pairs.first);
        const I16 second = lumaTerm(pairs.second);
        const I16 green = hn::Add(chromaTerm(pairs.cb, k_.greenPerCb), chromaTerm(pairs.cr, k_.greenPerCr));
        hn::StoreInterleaved3(channel(first, second, chromaTerm(pairs.cr, k_.redPerCr)),
                              channel(first, second, green),
                              channel(first, second, chromaTerm(pairs.cb, k_.bluePerCb)), u8, rgb);
    }

    static HWY_INLINE U16 load(const std::uint8_t *from) { return hn::BitCast(u16, hn::LoadU(u8, from)); }

    static HWY_INLINE U16 low(U16 lanes) { return hn::And(lanes, hn::Set(u16, 0xFF)); }

    static HWY_INLINE U16 high(U16 lanes) { return hn::ShiftRight<8>(lanes); }

    [[nodiscard]] HWY_INLINE Pairs pairsAt(std::size_t x) const
    {
        const std::uint8_t *luma = row_.y - layout.lumaOffset + x * layout.lumaStep;
        const std::uint8_t *cb = row_.cb + x / 2 * layout.chromaStep;
        if constexpr (layout.lumaStep == 2) {
            U16 first;
            U16 second;
            hn::LoadInterleaved2(u16, reinterpret_cast<const std::uint16_t *>(luma), first, second);
            if constexpr (layout.lumaOffset == 0)
                return {low(first), low(second), high(first), high(second)};
            else
                return {high(first), high(second), low(first), low(second)};
        } else if constexpr (layout.chromaStep == 2) {
            const U16 chroma = load(cb);
            return {low(load(luma)), high(load(luma)), low(chroma), high(chroma)};
        } else {
            const std::uint8_t *cr = row_.cr + x / 2;
            return {low(load(luma)), high(load(luma)), hn::PromoteTo(u16, hn::LoadU(halfOfU8, cb)),
                    hn::PromoteTo(u16, hn::LoadU(halfOfU8, cr))};
        }
    }

    static HWY_INLINE I16 set(int value) { return hn::Set(i16, static_cast<std::int16_t>(value)); }

    [[nodiscard]] HWY_INLINE I16 lumaTerm(U16 y) const
    {
        return hn::Add(hn::MulFixedPoint15(hn::BitCast(i16, hn::ShiftLeft<7>(y)), set(k_.luma)),
                       set(k_.offset));
    }

    /// What chroma brings, for the sample less 128, times 256.
    static HWY_INLINE I16 chromaTerm(U16 sample, int perSample)
    {
        const U16 centred = hn::Xor(hn::ShiftLeft<8>(sample), hn::Set(u16, 0x8000));
        return hn::MulFixedPoint15(hn::BitCast(i16, centred), set(perSample));
    }

    static HWY_INLINE U16 limited(I16 terms)
    {
        const I16 value = hn::ShiftRight<6>(terms);
        return hn::BitCast(u16, hn::Min(hn::Max(value, hn::Zero(i16)), set(255)));
    }

    /// A channel of both pixels of each pair, in the order of the picture.
    static HWY_INLINE U8 channel(I16 first, I16 second, I16 chroma)
    {
        const U16 odd = hn::ShiftLeft<8>(limited(hn::SaturatedAdd(second, chroma)));
        return hn::BitCast(u8, hn::Or(limited(hn::SaturatedAdd(first, chroma)), odd));
    }

    YcbcrRow row_;
    YcbcrConversion k_; // a copy, which no pointer can alias
};

void convertYcbcrRow(const VideoFrame &frame, const YcbcrConversion &conversion, int y,
                     std::span<std::uint8_t> rgb)
{
    if (frame.format == PixelFormat::NV12)
        RgbOfRow<nv12Layout>(frame, y, conversion).write(rgb);
    else if (frame.format == PixelFormat::I420)
        RgbOfRow<i420Layout>(frame, y, conversion).write(rgb);
    else if (frame.format == PixelFormat::YUY2)
        RgbOfRow<yuy2Layout>(frame, y, conversion).write(rgb);
    else
        RgbOfRow<uyvyLayout>(frame, y, conversion).write(rgb);
}

} // namespace
} // namespace skyflare::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skyflare {

HWY_EXPORT(convertYcbcrRow);

void convertYcbcrRow(const VideoFrame &frame, const YcbcrConversion &conversion, int y,
                     std::span<std::uint8_t> rgb)
{
    HWY_DYNAMIC_DISPATCH(convertYcbcrRow)(frame, conversion, y, rgb);
}

} // namespace skyflare
#endif
