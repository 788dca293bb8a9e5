#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace skyflare {

/// The shortest decimal that reads back as the same number, with a fraction always: "0.1", "1.0", "1e-05".
/// Not finite: "inf", "-inf", "nan".
std::string shortestDecimal(float number);
std::string shortestDecimal(double number);

/// ASCII letters alone: what a locale thinks of upper and lower case is of no concern to names of a standard.
constexpr char lowerAscii(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Whether both are the same but for the case of ASCII letters.
constexpr bool isSameInAnyCase(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, {}, lowerAscii, lowerAscii);
}

/// `text` without blanks, tabs and line ends before and behind it.
constexpr std::string_view withoutOuterSpace(std::string_view text)
{
    constexpr std::string_view space = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
    return text.substr(0, text.find_last_not_of(space) + 1);
}

/// `text` with U+FFFD in place of every byte that is no part of UTF-8, and of every NUL.
std::string validUtf8(std::string_view text);
/// Whether that would change nothing. Nothing is allocated.
bool isValidUtf8(std::string_view text);

/// The text in quotation marks as it would stand in source code: valid UTF-8 without a control character, so
/// that a line stays one line and a terminal shows what is there.
std::string quoted(std::string_view text);

} // namespace skyflare
