#include "platform/desktop/URLOpener.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <array>

namespace skyflare {

namespace {

constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view hexDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view schemeLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-.";
constexpr std::string_view allowed =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=%";

constexpr std::array<std::string_view, 4> openableSchemes{"https", "http", "mailto", "appstream"};

/// In lower case; empty if there is none.
std::string schemeOf(std::string_view url)
{
    const auto colon = url.find(':');
    std::string scheme(url.substr(0, colon == url.npos ? 0 : colon));
    if (scheme.empty() || letters.find(scheme.front()) == letters.npos ||
        scheme.find_first_not_of(schemeLetters) != scheme.npos)
        return {};
    std::ranges::transform(scheme, scheme.begin(), lowerAscii);
    return scheme;
}

/// Whether each percent sign begins an escaped byte.
bool isWellEscaped(std::string_view text)
{
    for (auto at = text.find('%'); at != text.npos; at = text.find('%', at + 1)) {
        const auto digits = text.substr(at + 1, 2);
        if (digits.size() < 2 || digits.find_first_not_of(hexDigits) != digits.npos)
            return false;
    }
    return true;
}

} // namespace

bool formsURL(std::string_view text)
{
    return !schemeOf(text).empty() && text.find_first_not_of(allowed) == text.npos && isWellEscaped(text);
}

bool isOpenableURL(std::string_view url)
{
    if (url == openSettingsURLString)
        return true;
    return formsURL(url) && std::ranges::find(openableSchemes, schemeOf(url)) != openableSchemes.end();
}

} // namespace skyflare
