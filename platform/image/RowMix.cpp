#include "platform/image/RowMix.h"

// This file includes itself again and again, once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/image/RowMix.cpp"
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
constexpr hn::Repartition<std::int64_t, decltype(u8)> i64;
constexpr hn::Repartition<std::uint64_t, decltype(u8)> u64;
constexpr hn::Half<decltype(u8)> halfOfU8;

using U8 = hn::Vec<decltype(u8)>;
using U16 = hn::Vec<decltype(u16)>;

constexpr bool hasVectors = hn::MaxLanes(u8) > 1; // not the fallback for machines without

int mixed(int first, int second, int weight)
{
    return (first * (MixedColumns::whole - weight) + second * weight + MixedColumns::whole / 2) >> 8;
}

/// The same in each lane: first × 256 + (second - first) × weight fits into it, whatever is carried
/// meanwhile.
HWY_INLINE U16 mixedLanes(U16 firstTimes256, U16 first, U16 second, U16 weight)
{
    const U16 difference = hn::Mul(hn::Sub(second, first), weight);
    const U16 half = hn::Set(u16, MixedColumns::whole / 2);
    return hn::ShiftRight<8>(hn::Add(hn::Add(firstTimes256, difference), half));
}

void mixRows(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second, int weight,
             std::span<std::uint8_t> result)
{
    std::size_t i = 0;
    if constexpr (hasVectors) {
        const U16 weights = hn::Set(u16, static_cast<std::uint16_t>(weight));
        const U16 low = hn::Set(u16, 0xFF);
        for (; i + hn::Lanes(u8) <= result.size(); i += hn::Lanes(u8)) {
            const U16 a = hn::BitCast(u16, hn::LoadU(u8, first.data() + i));
            const U16 b = hn::BitCast(u16, hn::LoadU(u8, second.data() + i));
            const U16 even = mixedLanes(hn::ShiftLeft<8>(a), hn::And(a, low), hn::And(b, low), weights);
            const U16 odd =
                mixedLanes(hn::AndNot(low, a), hn::ShiftRight<8>(a), hn::ShiftRight<8>(b), weights);
            hn::StoreU(hn::BitCast(u8, hn::Or(even, hn::ShiftLeft<8>(odd))), u8, result.data() + i);
        }
    }
    for (; i < result.size(); ++i)
        result[i] = static_cast<std::uint8_t>(mixed(first[i], second[i], weight));
}

std::uint32_t mixedPixel(const std::uint8_t *rgb, int weight)
{
    const auto channel = [&](int index) {
        return static_cast<std::uint32_t>(mixed(rgb[index], rgb[index + 3], weight));
    };
    return 0xFF000000U | channel(0) << 16 | channel(1) << 8 | channel(2);
}

/// The first and the second pixel lie in the eight bytes of a lane; each becomes four lanes B, G, R, 0.
constexpr std::uint8_t none = 0x80;
HWY_ALIGN constexpr std::uint8_t firstPixels[16] = {2,  none, 1, none, 0, none, none, none,
                                                    10, none, 9, none, 8, none, none, none};
HWY_ALIGN constexpr std::uint8_t secondPixels[16] = {5,  none, 4,  none, 3,  none, none, none,
                                                     13, none, 12, none, 11, none, none, none};

void mixColumns(std::span<const std::uint8_t> row, const MixedColumns &columns,
                std::span<std::uint32_t> result)
{
    std::size_t x = 0;
    if constexpr (hasVectors) {
        const U8 toFirst = hn::LoadDup128(u8, firstPixels);
        const U8 toSecond = hn::LoadDup128(u8, secondPixels);
        const U16 opaque = hn::BitCast(u16, hn::Set(u64, 0x00FF'0000'0000'0000));
        const auto *const bytes = reinterpret_cast<const std::uint64_t *>(row.data());
        for (; x + hn::Lanes(u64) <= result.size(); x += hn::Lanes(u64)) {
            const auto pairs =
                hn::BitCast(u8, hn::GatherOffset(u64, bytes, hn::LoadU(i64, columns.first.data() + x)));
            const U16 weights = hn::BitCast(u16, hn::LoadU(u64, columns.weights.data() + x));
            const U16 a = hn::BitCast(u16, hn::TableLookupBytesOr0(pairs, toFirst));
            const U16 b = hn::BitCast(u16, hn::TableLookupBytesOr0(pairs, toSecond));
            const U16 channels = hn::Or(mixedLanes(hn::ShiftLeft<8>(a), a, b, weights), opaque);
            hn::StoreU(hn::DemoteTo(halfOfU8, hn::BitCast(i16, channels)), halfOfU8,
                       reinterpret_cast<std::uint8_t *>(result.data() + x));
        }
    }
    for (; x < result.size(); ++x)
        result[x] = mixedPixel(row.data() + columns.first[x], static_cast<int>(columns.weights[x] & 0xFFFF));
}

} // namespace
} // namespace skyflare::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skyflare {

HWY_EXPORT(mixRows);
HWY_EXPORT(mixColumns);

void mixRows(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second, int weight,
             std::span<std::uint8_t> mixed)
{
    HWY_DYNAMIC_DISPATCH(mixRows)(first, second, weight, mixed);
}

void mixColumns(std::span<const std::uint8_t> row, const MixedColumns &columns,
                std::span<std::uint32_t> result)
{
    HWY_DYNAMIC_DISPATCH(mixColumns)(row, columns, result);
}

} // namespace skyflare
#endif
