#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace skyflare {

/// Between which two pixels of a row each pixel of another lies, and how near to the second. As vectors want
/// it: a list each.
struct MixedColumns {
    static constexpr int whole = 256; ///< the weight of the second where the first does not count

    std::vector<std::int64_t> first;    ///< where the first begins, in bytes; the second follows it
    std::vector<std::uint64_t> weights; ///< of the second, in each lane of 16 bits; 0 where there is none

    [[nodiscard]] std::size_t size() const { return first.size(); }
};

/// How many bytes behind a row must be there for mixColumns(); what they are is the same.
inline constexpr std::size_t mixedRowPadding = 8;

/// Between two rows of bytes, `weight` of 256 from the first to the second, into `mixed`. With the widest
/// vectors that the machine has, and the same bits on any. All of one size, any alignment. Any thread.
void mixRows(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second, int weight,
             std::span<std::uint8_t> mixed);

/// The pixels of `columns`, as 0xFFRRGGBB, of a row of R, G, B with its padding. `result` is as long as
/// `columns`. Vectors as above. Any thread.
void mixColumns(std::span<const std::uint8_t> row, const MixedColumns &columns,
                std::span<std::uint32_t> result);

} // namespace skyflare
