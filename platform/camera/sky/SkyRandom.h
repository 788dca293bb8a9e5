#pragma once

#include <cstdint>

namespace skyflare {

/// Spreads a number over all 64 bits (the finaliser of SplitMix64).
constexpr std::uint64_t spreadBits(std::uint64_t value)
{
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

/// Numbers that look random and are the same on every machine: std's distributions promise no such thing.
///
/// Threads: any, one at a time.
class SkyRandom {
public:
    /// The `index`-th sequence of that `purpose`; sequences have nothing to do with each other.
    SkyRandom(std::uint64_t seed, std::uint64_t purpose, std::uint64_t index = 0)
        : state_(spreadBits(spreadBits(spreadBits(seed) ^ purpose) ^ index))
    {
    }

    std::uint64_t bits() { return spreadBits(state_++); }
    /// 0 up to, and without, 1.
    float unit() { return static_cast<float>(bits() >> 40U) * 0x1p-24F; }
    float between(float low, float high) { return low + (high - low) * unit(); }
    int below(int count) { return static_cast<int>(bits() % static_cast<std::uint64_t>(count)); }
    /// About normal, deviation 1: the sum of four even ones.
    float bell() { return (unit() + unit() + unit() + unit() - 2.0F) * 1.7320508F; }

private:
    std::uint64_t state_;
};

/// 0 up to, and without, 1, from two numbers.
constexpr float unitOf(std::uint64_t first, std::uint64_t second)
{
    return static_cast<float>(spreadBits(first * 0x9E3779B97F4A7C15U + second) >> 40U) * 0x1p-24F;
}

} // namespace skyflare
