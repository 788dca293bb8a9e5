#include "platform/image/RedSum.h"

#include "platform/image/YcbcrConversion.h"

#include <utility>

// This file includes itself again and again, once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/image/RedSum.cpp"
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
constexpr hn::Repartition<std::uint32_t, decltype(u8)> u32;
constexpr hn::Repartition<std::uint64_t, decltype(u8)> u64;
constexpr hn::Half<decltype(u8)> halfOfU8;

using U8 = hn::Vec<decltype(u8)>;
using I16 = hn::Vec<decltype(i16)>;
using U16 = hn::Vec<decltype(u16)>;
using U64 = hn::Vec<decltype(u64)>;

/// Grey is luma whose chroma is the same everywhere.
constexpr YcbcrLayout grayLayout{.chromaStep = 0};
constexpr std::uint8_t neutralChroma = 128;

/// Added to a red in 1/64, this makes 16-bit lanes overflow just where the red would exceed 255.
constexpr int headroom = 1 << 14;

/// Asks for what will be read soon: a frame that is in no cache comes at the pace of the memory only if it
/// is asked for this early, and into the second cache; the first one takes too few requests at a time.
HWY_INLINE void askAhead(const std::uint8_t *reading)
{
    constexpr std::uintptr_t distance = 6144;
    // As a number, because it may lie beyond the frame; there it does nothing.
    const auto ahead = reinterpret_cast<std::uintptr_t>(reading) + distance;
    __builtin_prefetch(reinterpret_cast<const void *>(ahead), 0, 2); // NOLINT(performance-no-int-to-ptr)
}

/// The red of one row of a YCbCr frame.
template <YcbcrLayout layout> class YcbcrReds {
public:
    YcbcrReds(const VideoFrame &frame, int y, const YcbcrConversion &conversion)
        : row_(ycbcrRow<layout>(frame, y)), k_(conversion)
    {
        if constexpr (layout.chromaStep == 0)
            row_.cr = &neutralChroma;
    }

    [[nodiscard]] int redAt(std::size_t x) const
    {
        return k_.redOf(row_.y[x * layout.lumaStep], row_.cr[x / 2 * layout.chromaStep]);
    }

    /// The reds of as many pixels as a vector has bytes, in partial sums.
    [[nodiscard]] HWY_INLINE U64 sumsFrom(std::size_t x) const
    {
        const std::uint8_t *luma = row_.y - layout.lumaOffset + x * layout.lumaStep;
        askAhead(luma);
        if constexpr (layout.lumaStep == 1) {
            const U16 pairs = load(luma);
            const I16 chroma = chromaTerm(chromaOfPairs(x));
            return sums(red(times128<0>(pairs), chroma), red(times128<1>(pairs), chroma));
        } else {
            const std::uint8_t *next = luma + hn::Lanes(u8);
            askAhead(next);
            return sums(redOfPacked(load(luma)), redOfPacked(load(next)));
        }
    }

private:
    static HWY_INLINE U16 load(const std::uint8_t *from) { return hn::BitCast(u16, hn::LoadU(u8, from)); }

    /// Cr for as many pairs of pixels as a vector has 16-bit lanes, times 256.
    [[nodiscard]] HWY_INLINE U16 chromaOfPairs(std::size_t x) const
    {
        const std::uint8_t *chroma = row_.cr - layout.crOffset + x / 2 * layout.chromaStep;
        if constexpr (layout.chromaStep == 0)
            return hn::Set(u16, neutralChroma * 256);
        askAhead(chroma);
        if constexpr (layout.chromaStep == 1)
            return hn::ShiftLeft<8>(hn::PromoteTo(u16, hn::LoadU(halfOfU8, chroma)));
        else
            return hn::And(load(chroma), hn::Set(u16, 0xFF00));
    }

    /// The reds of pixels whose luma and chroma stand side by side.
    [[nodiscard]] HWY_INLINE U16 redOfPacked(U16 lanes) const
    {
        constexpr std::uint8_t none = 0x80;
        constexpr std::uint8_t cr = layout.crOffset;
        alignas(16) static constexpr std::array<std::uint8_t, 16> crTimes256{
            none, cr,     none, cr,     none, cr + 4,  none, cr + 4, // one for both pixels of a pair
            none, cr + 8, none, cr + 8, none, cr + 12, none, cr + 12};
        const U8 chroma =
            hn::TableLookupBytesOr0(hn::BitCast(u8, lanes), hn::LoadDup128(u8, crTimes256.data()));
        return red(times128<layout.lumaOffset>(lanes), chromaTerm(hn::BitCast(u16, chroma)));
    }

    /// One byte of each lane, times 128.
    template <std::size_t byte> static HWY_INLINE I16 times128(U16 lanes)
    {
        if constexpr (byte == 0)
            lanes = hn::ShiftLeft<7>(lanes);
        else
            lanes = hn::ShiftRight<1>(lanes);
        return hn::BitCast(i16, hn::And(lanes, hn::Set(u16, 0x7F80)));
    }

    [[nodiscard]] HWY_INLINE I16 chromaTerm(U16 chromaTimes256) const
    {
        const I16 centred = hn::BitCast(i16, hn::Xor(chromaTimes256, hn::Set(u16, 0x8000)));
        return hn::Add(hn::MulFixedPoint15(centred, set(k_.redPerCr)), set(k_.offset + headroom));
    }

    /// In 1/64, limited below and above.
    [[nodiscard]] HWY_INLINE U16 red(I16 lumaTimes128, I16 chromaTerm) const
    {
        const I16 lumaTerm = hn::MulFixedPoint15(lumaTimes128, set(k_.luma));
        const I16 limitedAbove = hn::SaturatedAdd(lumaTerm, chromaTerm);
        return hn::SaturatedSub(hn::BitCast(u16, limitedAbove), hn::Set(u16, headroom));
    }

    static HWY_INLINE U64 sums(U16 first, U16 second)
    {
        const U16 both = hn::OrAnd(hn::ShiftRight<6>(first), hn::ShiftLeft<2>(second), hn::Set(u16, 0xFF00));
        return hn::SumsOf8(hn::BitCast(u8, both));
    }

    static HWY_INLINE I16 set(int value) { return hn::Set(i16, static_cast<std::int16_t>(value)); }

    YcbcrRow row_;
    YcbcrConversion k_; // a copy, which no pointer can alias
};

/// The red of one row of an RGB frame, with the same functions.
template <std::size_t step, std::size_t redOffset> class RgbReds {
public:
    RgbReds(const VideoFrame &frame, int y, const YcbcrConversion & /*conversion*/)
        : row_(frame.planes[0].data + frame.planes[0].stride * y)
    {
    }

    [[nodiscard]] int redAt(std::size_t x) const { return row_[x * step + redOffset]; }

    [[nodiscard]] HWY_INLINE U64 sumsFrom(std::size_t x) const
    {
        const std::uint8_t *from = row_ + x * step;
        for (std::size_t i = 0; i < step; ++i)
            askAhead(from + i * hn::Lanes(u8));
        if constexpr (step == 3) {
            U8 red;
            U8 green;
            U8 blue;
            hn::LoadInterleaved3(u8, from, red, green, blue);
            return hn::SumsOf8(red);
        } else {
            return hn::Add(hn::Add(sumsOf4(from, 0), sumsOf4(from, 1)),
                           hn::Add(sumsOf4(from, 2), sumsOf4(from, 3)));
        }
    }

private:
    static HWY_INLINE U64 sumsOf4(const std::uint8_t *from, std::size_t vector)
    {
        const U8 mask = hn::BitCast(u8, hn::Set(u32, 0xFFU << (8 * redOffset)));
        return hn::SumsOf8(hn::And(hn::LoadU(u8, from + vector * hn::Lanes(u8)), mask));
    }

    const std::uint8_t *row_;
};

/// The red of one or more rows, read side by side.
template <typename... Reds> std::uint64_t sumOfRows(std::size_t width, const Reds &...reds)
{
    std::uint64_t sum = 0;
    std::size_t x = 0;
    if constexpr (hn::MaxLanes(u8) > 1) { // not in the fallback for machines without vectors
        const std::size_t pixelsAtOnce = hn::Lanes(u8);
        U64 sums = hn::Zero(u64);
        for (; x + pixelsAtOnce <= width; x += pixelsAtOnce)
            ((sums = hn::Add(sums, reds.sumsFrom(x))), ...);
        sum = hn::GetLane(hn::SumOfLanes(u64, sums));
    }
    for (; x < width; ++x)
        sum += static_cast<std::uint64_t>((reds.redAt(x) + ...));
    return sum;
}

/// The memory serves several places faster than one; two make 1.24 times the time to read, six 1.12.
using Places = std::make_index_sequence<6>;

/// The red of a frame that is read in as many places at once.
template <typename Reds, std::size_t... place>
std::uint64_t sumOfFrame(const VideoFrame &frame, std::index_sequence<place...> /*places*/)
{
    const YcbcrConversion conversion = ycbcrConversion(frame.matrix, frame.range);
    const auto width = static_cast<std::size_t>(frame.width);
    const auto reds = [&](int y) { return Reds(frame, y, conversion); };
    const int rows = frame.height / static_cast<int>(sizeof...(place)); // of one place
    std::uint64_t sum = 0;
    for (int y = 0; y < rows; ++y)
        sum += sumOfRows(width, reds(static_cast<int>(place) * rows + y)...);
    for (int y = static_cast<int>(sizeof...(place)) * rows; y < frame.height; ++y)
        sum += sumOfRows(width, reds(y));
    return sum;
}

template <typename Reds> std::uint64_t sumOfFrame(const VideoFrame &frame)
{
    return sumOfFrame<Reds>(frame, Places());
}

std::uint64_t redSum(const VideoFrame &frame)
{
    switch (frame.format) {
    case PixelFormat::NV12:
        return sumOfFrame<YcbcrReds<nv12Layout>>(frame);
    case PixelFormat::I420:
        return sumOfFrame<YcbcrReds<i420Layout>>(frame);
    case PixelFormat::YUY2:
        return sumOfFrame<YcbcrReds<yuy2Layout>>(frame);
    case PixelFormat::UYVY:
        return sumOfFrame<YcbcrReds<uyvyLayout>>(frame);
    case PixelFormat::GRAY8:
        return sumOfFrame<YcbcrReds<grayLayout>>(frame);
    case PixelFormat::RGBx:
        return sumOfFrame<RgbReds<4, 0>>(frame);
    case PixelFormat::BGRx:
        return sumOfFrame<RgbReds<4, 2>>(frame);
    case PixelFormat::RGB:
        return sumOfFrame<RgbReds<3, 0>>(frame);
    case PixelFormat::Jpeg:
    case PixelFormat::Unknown:
        break;
    }
    return 0;
}

} // namespace
} // namespace skyflare::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skyflare {

HWY_EXPORT(redSum);

std::uint64_t redSum(const VideoFrame &frame)
{
    return HWY_DYNAMIC_DISPATCH(redSum)(frame);
}

} // namespace skyflare
#endif
