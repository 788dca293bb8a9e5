#include "bench/ReadOnce.h"

#include <cstddef>
#include <numeric>

// This file includes itself again and again, once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/ReadOnce.cpp"
// clang-format off: the order matters
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace skyflare::bench::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr hn::ScalableTag<std::uint8_t> u8;
constexpr hn::Repartition<std::uint64_t, decltype(u8)> u64;
using U64 = hn::Vec<decltype(u64)>;

/// Of two vectors.
template <AskAhead askAhead> HWY_INLINE U64 sumsOfTwo(const std::uint8_t *from)
{
    const std::size_t size = hn::Lanes(u8);
    if constexpr (askAhead == AskAhead::Yes) {
        for (std::size_t line = 0; line < 2 * size; line += 64)
            __builtin_prefetch(from + 6144 + line, 0, 2);
    }
    return hn::Add(hn::SumsOf8(hn::LoadU(u8, from)), hn::SumsOf8(hn::LoadU(u8, from + size)));
}

template <AskAhead askAhead> std::uint64_t readAll(std::span<const std::uint8_t> bytes)
{
    const std::size_t step = 2 * hn::Lanes(u8);
    const std::size_t half = bytes.size() / 2 / step * step;
    U64 upper = hn::Zero(u64);
    U64 lower = upper;
    for (std::size_t i = 0; i < half; i += step) {
        upper = hn::Add(upper, sumsOfTwo<askAhead>(bytes.data() + i));
        lower = hn::Add(lower, sumsOfTwo<askAhead>(bytes.data() + half + i));
    }
    const std::uint64_t sum = hn::GetLane(hn::SumOfLanes(u64, hn::Add(upper, lower)));
    const auto rest = bytes.subspan(2 * half);
    return std::accumulate(rest.begin(), rest.end(), sum);
}

std::uint64_t readOnce(std::span<const std::uint8_t> bytes, AskAhead askAhead)
{
    return askAhead == AskAhead::Yes ? readAll<AskAhead::Yes>(bytes) : readAll<AskAhead::No>(bytes);
}

} // namespace
} // namespace skyflare::bench::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skyflare::bench {

HWY_EXPORT(readOnce);

std::uint64_t readOnce(std::span<const std::uint8_t> bytes, AskAhead askAhead)
{
    return HWY_DYNAMIC_DISPATCH(readOnce)(bytes, askAhead);
}

} // namespace skyflare::bench
#endif
