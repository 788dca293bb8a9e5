#include "platform/base/Text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace skyflare {

namespace {

/// Plain digits as long as they say no more than the number knows: from 0.0001 up to the last whole number
/// before which none is left out (2^24 for a float, 2^53 for a double); with an exponent otherwise.
template <typename Number> std::string shortest(Number number)
{
    if (std::isnan(number))
        return "nan"; // without the sign that to_chars would print
    constexpr Number smallest = static_cast<Number>(1e-4);
    constexpr Number largest = static_cast<Number>(std::uint64_t{1} << std::numeric_limits<Number>::digits);
    const Number size = std::abs(number);
    const bool plain = size == 0 || (size >= smallest && size <= largest);

    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                   plain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    std::string result(text.data(), end);
    if (plain && result.find('.') == std::string::npos)
        result += ".0";
    return result;
}

/// How many bytes the character at the start of `text` has, 0 if there is none.
std::size_t characterLength(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return lead == 0 ? 0 : 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC0 || lead > 0xF4 || text.size() < length)
        return 0;
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80)
            return 0;
        code = code << 6 | (byte(at) & 0x3FU);
    }
    constexpr std::array<unsigned, 5> least = {0, 0, 0x80, 0x800, 0x10000}; // less would fit into fewer bytes
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < least.at(length) || code > 0x10FFFF || isSurrogate ? 0 : length;
}

} // namespace

std::string validUtf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        valid += length > 0 ? text.substr(0, length) : "\xEF\xBF\xBD";
        text.remove_prefix(length > 0 ? length : 1);
    }
    return valid;
}

std::string shortestDecimal(float number)
{
    return shortest(number);
}

std::string shortestDecimal(double number)
{
    return shortest(number);
}

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char character : text) {
        switch (character) {
        case '"':
            result += "\\\"";
            break;
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            if (const auto code = static_cast<unsigned char>(character); code < 0x20 || code == 0x7f) {
                std::array<char, 8> escape{};
                std::snprintf(escape.data(), escape.size(), "\\u{%02X}", static_cast<unsigned>(code));
                result += escape.data();
            } else {
                result += character;
            }
        }
    }
    return result + '"';
}

} // namespace skyflare
