#include "platform/cloud/FIRInstallations.h"

#include <array>
#include <cstdint>

namespace skyflare {

namespace {

constexpr std::string_view installationIDKey = "installationID";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t identifierBytes = 16;

bool isIdentifier(std::string_view text)
{
    return text.size() == 2 * identifierBytes && text.find_first_not_of(digits) == text.npos;
}

} // namespace

Result<std::string> FIRInstallations::installationID()
{
    const std::scoped_lock lock(mutex_);
    if (const auto kept = defaults_.stringForKey(installationIDKey); kept && isIdentifier(*kept))
        return *kept;
    std::array<std::uint8_t, identifierBytes> bytes{};
    if (const auto filled = random_.fill(bytes); !filled)
        return filled.error();
    std::string identifier;
    for (const unsigned byte : bytes) {
        identifier += digits[byte >> 4U];
        identifier += digits[byte & 15U];
    }
    defaults_.setObject(identifier, installationIDKey);
    return identifier;
}

} // namespace skyflare
