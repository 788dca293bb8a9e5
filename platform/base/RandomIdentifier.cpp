#include "platform/base/RandomIdentifier.h"

#include <array>

namespace skyflare {

namespace {

constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t byteCount = 16; // two digits each

} // namespace

Result<std::string> makeRandomIdentifier(RandomSource &random)
{
    std::array<std::uint8_t, byteCount> bytes{};
    if (const auto filled = random.fill(bytes); !filled)
        return filled.error();
    std::string identifier;
    for (const unsigned byte : bytes) {
        identifier += digits[byte >> 4U];
        identifier += digits[byte & 15U];
    }
    return identifier;
}

bool isRandomIdentifier(std::string_view text)
{
    return text.size() == 2 * byteCount && text.find_first_not_of(digits) == std::string_view::npos;
}

} // namespace skyflare
