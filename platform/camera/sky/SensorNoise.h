#pragma once

#include <cstdint>
#include <vector>

namespace skyflare {

/// The grain of a small sensor at night: strong in luma, softer and coarser in chroma.
///
/// Threads: any.
class SensorNoise {
public:
    SensorNoise(int width, std::uint64_t seed);

    /// Grain for one row of one frame, in sixty-fourths of a step of the picture; `width` values.
    [[nodiscard]] const std::int16_t *lumaRow(std::int64_t frame, int row) const;
    [[nodiscard]] const std::int16_t *cbRow(std::int64_t frame, int row) const;
    [[nodiscard]] const std::int16_t *crRow(std::int64_t frame, int row) const;

private:
    std::uint64_t seed_;
    std::vector<std::int16_t> luma_;
    std::vector<std::int16_t> chroma_;

    [[nodiscard]] std::size_t slice(std::int64_t frame, int row, std::uint64_t plane) const;
};

} // namespace skyflare
