#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace skyflare {

/// A Huffman code for single bytes, and blocks of deflate data (RFC 1951) that consist of nothing else.
///
/// Noise does not repeat: the search for repetitions is nearly all the time that deflate takes, and what it
/// finds by chance costs more bits than it saves.
/// Threads: any.
class LiteralCode {
public:
    using Counts = std::array<std::uint32_t, 256>;

    /// @param counts  how often each byte is met, or about how often: a byte with the count 0 gets a code
    /// too.
    explicit LiteralCode(const Counts &counts);

    /// The mean length of a byte's code, in bits, over bytes that are met as often as `counts` says.
    [[nodiscard]] double meanBits(const Counts &counts) const;

    /// The bytes that write() needs at most.
    static constexpr std::size_t roomFor(std::size_t bytes) { return bytes + bytes * 3 / 4 + 192; }

    /// Writes a block of `bytes` that is not the last one, filled up to a whole byte by an empty stored block
    /// as zlib's sync flush does, so that blocks can be joined.
    /// @return the end of what was written.
    std::uint8_t *write(std::span<const std::uint8_t> bytes, std::uint8_t *into) const;

private:
    static constexpr std::size_t endOfBlock = 256;
    static constexpr std::size_t symbols = 257;

    std::array<std::uint16_t, symbols> codes_{};  ///< first bit lowest
    std::array<std::uint8_t, symbols> lengths_{}; ///< bits, 1 to 14

    void assignCodes();
};

} // namespace skyflare
