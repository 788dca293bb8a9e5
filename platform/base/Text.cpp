#include "platform/base/Text.h"

#include <algorithm>
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

struct Character {
    std::size_t length = 0; ///< bytes; 0: there is none
    unsigned code = 0;
};

/// The character at the start of `text`. NUL is none.
Character characterOf(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return {lead == 0 ? 0U : 1U, lead};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC0 || lead > 0xF4 || text.size() < length)
        return {};
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80)
            return {};
        code = code << 6 | (byte(at) & 0x3FU);
    }
    constexpr std::array<unsigned, 5> least = {0, 0, 0x80, 0x800, 0x10000}; // less would fit into fewer bytes
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < least.at(length) || code > 0x10FFFF || isSurrogate)
        return {};
    return {length, code};
}

/// What ends a line, commands a terminal, or turns the direction in which the rest is read.
bool isControl(unsigned code)
{
    struct Range {
        unsigned first, last;
    };
    constexpr std::array<Range, 5> controls{
        {{0x00, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}}};
    return std::ranges::any_of(
        controls, [code](const Range &range) { return code >= range.first && code <= range.last; });
}

/// A character as it would stand in source code, if it cannot stand there as itself.
std::string escapeFor(unsigned code)
{
    switch (code) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    if (!isControl(code))
        return {};
    std::array<char, 16> escape{};
    std::snprintf(escape.data(), escape.size(), "\\u{%02X}", code);
    return escape.data();
}

} // namespace

std::string validUtf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterOf(text).length;
        valid += length > 0 ? text.substr(0, length) : "\xEF\xBF\xBD";
        text.remove_prefix(length > 0 ? length : 1);
    }
    return valid;
}

bool isValidUtf8(std::string_view text)
{
    const auto isAscii = [](char each) { return static_cast<signed char>(each) > 0; };
    for (;;) {
        text.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(text, isAscii) - text.begin()));
        if (text.empty())
            return true;
        const std::size_t length = characterOf(text).length;
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
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
    while (!text.empty()) {
        const auto [length, code] = characterOf(text);
        if (length == 0) {
            result += text.front() == '\0' ? escapeFor(0) : "\xEF\xBF\xBD";
        } else {
            const std::string escape = escapeFor(code);
            result += escape.empty() ? text.substr(0, length) : std::string_view(escape);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result + '"';
}

} // namespace skyflare
