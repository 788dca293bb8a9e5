#include "analytics/validation/CodePoints.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace skyflare::codePoints {

namespace {

/// Takes one code point from the start of a text that is not empty.
UChar32 next(std::string_view &text)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(text.data());
    std::size_t read = 0;
    UChar32 codePoint = 0;
    U8_NEXT_OR_FFFD(bytes, read, text.size(), codePoint);
    text.remove_prefix(read);
    return codePoint;
}

bool isLetter(UChar32 codePoint)
{
    return (U_GET_GC_MASK(codePoint) & U_GC_L_MASK) != 0;
}

bool isNameCharacter(UChar32 codePoint)
{
    return codePoint == '_' || (U_GET_GC_MASK(codePoint) & (U_GC_L_MASK | U_GC_ND_MASK)) != 0;
}

/// How many bytes at the start of the text are ASCII, in steps of eight.
std::size_t asciiStart(std::string_view text)
{
    std::size_t length = 0;
    for (; text.size() - length >= sizeof(std::uint64_t); length += sizeof(std::uint64_t)) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, text.data() + length, sizeof eight);
        if ((eight & 0x8080808080808080U) != 0)
            break;
    }
    return length;
}

// What a byte says about the name that it stands in.
constexpr std::uint8_t nameByte = 0;
constexpr std::uint8_t otherByte = 1;
constexpr std::uint8_t beyondAscii = 2;

constexpr bool isAsciiLetter(std::size_t byte)
{
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

constexpr std::array<std::uint8_t, 256> byteKinds = [] {
    std::array<std::uint8_t, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        const bool isName = isAsciiLetter(byte) || (byte >= '0' && byte <= '9') || byte == '_';
        kinds.at(byte) = byte >= 0x80 ? beyondAscii : isName ? nameByte : otherByte;
    }
    return kinds;
}();

} // namespace

std::size_t count(std::string_view text)
{
    std::size_t result = 0;
    while (!text.empty()) {
        const std::size_t ascii = asciiStart(text);
        text.remove_prefix(ascii);
        result += ascii;
        for (int more = 0; more < 8 && !text.empty(); ++more, ++result)
            next(text);
    }
    return result;
}

bool isLongerThan(std::string_view text, std::size_t length)
{
    // A code point takes one byte at least and four at most.
    if (text.size() <= length)
        return false;
    return (text.size() - 1) / 4 >= length || count(text) > length;
}

NameShape shapeOf(std::string_view name)
{
    if (name.empty())
        return {};
    std::uint8_t seen = 0;
    for (const char character : name)
        seen |= byteKinds[static_cast<unsigned char>(character)];
    if ((seen & beyondAscii) == 0)
        return {(seen & otherByte) == 0, isAsciiLetter(static_cast<unsigned char>(name.front()))};

    const UChar32 first = next(name);
    NameShape shape{isNameCharacter(first), isLetter(first)};
    while (shape.hasNameCharactersOnly && !name.empty())
        shape.hasNameCharactersOnly = isNameCharacter(next(name));
    return shape;
}

bool areLetters(std::string_view text, std::size_t length)
{
    for (; length > 0 && !text.empty(); --length)
        if (!isLetter(next(text)))
            return false;
    return length == 0 && text.empty();
}

std::size_t decode(std::string_view text, std::span<char32_t> into)
{
    std::size_t count = 0;
    for (; count < into.size() && !text.empty(); ++count)
        into[count] = static_cast<char32_t>(next(text));
    return count;
}

void append(std::string &text, std::span<const char32_t> codePoints)
{
    for (const char32_t codePoint : codePoints) {
        std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
        std::size_t length = 0;
        U8_APPEND_UNSAFE(bytes, length, codePoint);
        text.append(bytes.begin(), bytes.begin() + length);
    }
}

} // namespace skyflare::codePoints
