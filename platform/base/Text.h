#pragma once

#include <string>
#include <string_view>

namespace skyflare {

/// The shortest decimal that reads back as the same number, with a fraction always: "0.1", "1.0", "1e-05".
/// Not finite: "inf", "-inf", "nan".
std::string shortestDecimal(float number);
std::string shortestDecimal(double number);

/// `text` with U+FFFD in place of every byte that is no part of UTF-8, and of every NUL.
std::string validUtf8(std::string_view text);

/// The text in quotation marks as it would stand in source code: valid UTF-8 without a control character, so
/// that a line stays one line and a terminal shows what is there.
std::string quoted(std::string_view text);

} // namespace skyflare
