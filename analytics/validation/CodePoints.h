#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

/// Text as the engine counts and classes it: in code points of UTF-8. A sequence that is ill-formed counts as
/// one U+FFFD for each part that could have begun a character, as browsers and ICU have it; that is no
/// letter.
///
/// Letters are the categories L* of Unicode: a combining mark (M*) is none. Digits are those of category Nd.
///
/// Threads: any.
namespace skyflare::codePoints {

[[nodiscard]] std::size_t count(std::string_view text);
/// The same as count() > length, without reading more of a long text than that takes.
[[nodiscard]] bool isLongerThan(std::string_view text, std::size_t length);

struct NameShape {
    bool hasNameCharactersOnly = true; ///< letters, digits and "_"
    bool startsWithLetter = false;
};
[[nodiscard]] NameShape shapeOf(std::string_view name);

/// Whether the text is made of so many letters and of nothing else.
[[nodiscard]] bool areLetters(std::string_view text, std::size_t length);

/// Decodes from the start until `into` is full or the text ends. @return how many there are now.
std::size_t decode(std::string_view text, std::span<char32_t> into);
/// As UTF-8.
void append(std::string &text, std::span<const char32_t> codePoints);

} // namespace skyflare::codePoints
