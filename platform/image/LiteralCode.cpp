#include "platform/image/LiteralCode.h"

#include <algorithm>
#include <utility>

namespace skyflare {
namespace {

/// Deflate allows 15; with 14, four codes and what is left of a byte fit into 64 bits. Costs next to nothing.
constexpr std::size_t longestCode = 14;
constexpr std::size_t symbolCount = 257;

using LengthCounts = std::array<std::uint32_t, symbolCount>; ///< how many codes there are of each length

/// The lengths of Huffman's code for frequencies in rising order. Both queues of his algorithm lie in one
/// array: the symbols first, behind them the nodes as they are made, which is in rising order too.
LengthCounts lengthCounts(std::span<const std::uint64_t, symbolCount> rising)
{
    constexpr std::size_t nodeCount = 2 * symbolCount - 1;
    std::array<std::uint64_t, nodeCount> weights{};
    std::array<std::size_t, nodeCount> parents{};
    std::copy(rising.begin(), rising.end(), weights.begin());
    std::size_t symbol = 0;
    std::size_t node = symbolCount;
    for (std::size_t made = symbolCount; made < nodeCount; ++made) {
        for (int child = 0; child < 2; ++child) {
            const bool takeSymbol =
                symbol < symbolCount && (node == made || weights[symbol] <= weights[node]);
            const std::size_t taken = takeSymbol ? symbol++ : node++;
            weights[made] += weights[taken];
            parents[taken] = made;
        }
    }
    std::array<std::size_t, nodeCount> depths{};
    LengthCounts counts{};
    for (std::size_t i = nodeCount - 1; i-- > 0;) {
        depths[i] = depths[parents[i]] + 1;
        if (i < symbolCount)
            ++counts[depths[i]];
    }
    return counts;
}

/// Shortens the longest codes; others grow until there is a code for everybody again.
void limitLengths(LengthCounts &counts)
{
    std::uint64_t taken = 0; // of 2^longestCode
    for (std::size_t length = longestCode + 1; length < counts.size(); ++length)
        counts[longestCode] += std::exchange(counts[length], 0);
    for (std::size_t length = 1; length <= longestCode; ++length)
        taken += std::uint64_t{counts[length]} << (longestCode - length);
    for (; taken > std::uint64_t{1} << longestCode; --taken) {
        std::size_t length = longestCode - 1;
        while (counts[length] == 0)
            --length;
        --counts[longestCode];
        --counts[length];
        counts[length + 1] += 2;
    }
}

/// Puts bits behind each other, the first one lowest. Writes up to eight bytes more than it has filled.
class BitWriter {
public:
    explicit BitWriter(std::uint8_t *into) : into_(into) {}

    /// At most 56 bits.
    void put(std::uint64_t bits, std::size_t count)
    {
        waiting_ |= bits << waitingBits_;
        waitingBits_ += count;
        for (std::size_t i = 0; i < sizeof waiting_; ++i) // which compilers make one store of
            into_[i] = static_cast<std::uint8_t>(waiting_ >> (8 * i));
        into_ += waitingBits_ / 8;
        waiting_ >>= waitingBits_ & ~std::size_t{7};
        waitingBits_ %= 8;
    }
    void fillByte() { put(0, (8 - waitingBits_) % 8); }
    [[nodiscard]] std::uint8_t *end() const { return into_; }

private:
    std::uint8_t *into_;
    std::uint64_t waiting_ = 0;
    std::size_t waitingBits_ = 0;
};

} // namespace

LiteralCode::LiteralCode(const Counts &counts)
{
    static_assert(symbols == symbolCount);
    std::array<std::uint64_t, symbols>
        rising{}; // count and symbol in one number, which makes the order plain
    for (std::size_t i = 0; i < counts.size(); ++i)
        rising[i] = std::max(std::uint64_t{counts[i]} * 8, std::uint64_t{1}) << 16 | i;
    rising[endOfBlock] = std::uint64_t{1} << 16 | endOfBlock;
    std::ranges::sort(rising);
    std::array<std::uint64_t, symbols> frequencies{};
    std::ranges::transform(rising, frequencies.begin(), [](std::uint64_t entry) { return entry >> 16; });
    LengthCounts left = lengthCounts(frequencies);
    limitLengths(left);
    std::size_t length = longestCode;
    for (const std::uint64_t entry : rising) {
        while (left[length] == 0)
            --length;
        --left[length];
        lengths_[entry & 0xFFFF] = static_cast<std::uint8_t>(length);
    }
    assignCodes();
}

void LiteralCode::assignCodes()
{
    std::uint32_t code = 0;
    for (std::uint8_t length = 1; length <= longestCode; ++length, code <<= 1) {
        for (std::size_t symbol = 0; symbol < symbols; ++symbol) {
            if (lengths_[symbol] != length)
                continue;
            for (std::uint32_t bit = 0; bit < length; ++bit)
                codes_[symbol] |= static_cast<std::uint16_t>((code >> bit & 1U) << (length - 1U - bit));
            ++code;
        }
    }
}

double LiteralCode::meanBits(const Counts &counts) const
{
    double bits = 0;
    double bytes = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        bits += static_cast<double>(counts[i]) * lengths_[i];
        bytes += counts[i];
    }
    return bytes > 0 ? bits / bytes : 0;
}

std::uint8_t *LiteralCode::write(std::span<const std::uint8_t> bytes, std::uint8_t *into) const
{
    BitWriter writer(into);
    // Not the last block, with a code of its own: 257 lengths of literals, 2 of distances, 19 of the code
    // that these lengths are written in.
    writer.put(0b100 | std::uint64_t{1} << 8 | std::uint64_t{15} << 13, 17);
    for (std::size_t i = 0; i < 19;
         ++i) // that code: 0 to 15 as they are, in four bits; no runs, which are first
        writer.put(i < 3 ? 0 : 4, 3);
    const auto putLength = [&writer](std::uint32_t length) {
        std::uint64_t reversed = 0;
        for (std::uint32_t bit = 0; bit < 4; ++bit)
            reversed |= std::uint64_t{length >> bit & 1U} << (3 - bit);
        writer.put(reversed, 4);
    };
    std::ranges::for_each(lengths_, putLength);
    putLength(1); // distances are never used, but some decoders want a whole code of them
    putLength(1);

    const std::uint8_t *byte = bytes.data();
    const std::uint8_t *const end = byte + bytes.size();
    const auto pair = [this](const std::uint8_t *two) {
        return std::uint64_t{codes_[two[0]]} | std::uint64_t{codes_[two[1]]} << lengths_[two[0]];
    };
    for (; end - byte >= 4; byte += 4) {
        const std::size_t first = std::size_t{lengths_[byte[0]]} + lengths_[byte[1]];
        const std::size_t second = std::size_t{lengths_[byte[2]]} + lengths_[byte[3]];
        writer.put(pair(byte) | pair(byte + 2) << first, first + second);
    }
    for (; byte != end; ++byte)
        writer.put(codes_[*byte], lengths_[*byte]);
    writer.put(codes_[endOfBlock], lengths_[endOfBlock]);
    writer.put(0, 3); // a stored block, not the last, of no bytes
    writer.fillByte();
    writer.put(0xFFFF0000, 32);
    return writer.end();
}

} // namespace skyflare
