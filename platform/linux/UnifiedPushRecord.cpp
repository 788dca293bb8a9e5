#include "platform/linux/UnifiedPushRecord.h"

#include "platform/base/RandomIdentifier.h"

#include <algorithm>
#include <array>

namespace skyflare {

namespace {

constexpr std::string_view tokenKey = "token";
constexpr std::string_view distributorKey = "distributor";

constexpr std::array<std::size_t, 4> dashes{8, 13, 18, 23};
constexpr std::size_t versionPlace = 12;
constexpr std::size_t variantPlace = 16;

bool isUuid(std::string text)
{
    for (const std::size_t place : dashes) {
        if (place >= text.size() || text[place] != '-')
            return false;
    }
    std::erase(text, '-');
    return isRandomIdentifier(text);
}

/// From 32 random digits.
std::string uuidFrom(std::string digits)
{
    constexpr std::string_view variants = "89ab";
    digits[versionPlace] = '4';
    digits[variantPlace] = variants[static_cast<unsigned char>(digits[variantPlace]) % variants.size()];
    for (const std::size_t place : dashes)
        digits.insert(place, 1, '-');
    return digits;
}

} // namespace

std::optional<std::string> UnifiedPushRecord::token() const
{
    auto kept = defaults_.stringForKey(tokenKey);
    return kept && isUuid(*kept) ? kept : std::nullopt;
}

Result<std::string> UnifiedPushRecord::makeToken(RandomSource &random)
{
    if (auto kept = token())
        return *std::move(kept);
    const auto digits = makeRandomIdentifier(random);
    if (!digits)
        return digits.error();
    std::string made = uuidFrom(*digits);
    defaults_.setObject(made, tokenKey);
    return made;
}

std::string UnifiedPushRecord::distributor() const
{
    return defaults_.stringForKey(distributorKey).value_or("");
}

void UnifiedPushRecord::setDistributor(const std::string &name)
{
    if (name != distributor())
        defaults_.setObject(name, distributorKey);
}

} // namespace skyflare
