#include "store/Uuid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>

namespace skyflare {

std::string makeUuid()
{
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    std::array<std::uint8_t, 16> bytes{};
    std::random_device source;
    for (std::uint8_t &byte : bytes)
        byte = static_cast<std::uint8_t>(source() & 0xff);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | 0x40); // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80); // variant of RFC 4122
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10)
            text += '-';
        text += hexadecimal[bytes[index] / 16];
        text += hexadecimal[bytes[index] % 16];
    }
    return text;
}

} // namespace skyflare
