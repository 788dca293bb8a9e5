#include "screens/main/ForcedUpdate.h"

#include <charconv>
#include <cstdint>
#include <string>

namespace skyflare {

bool isUpdateForced(std::string_view shortVersion, double least)
{
    std::string digits(shortVersion);
    std::erase(digits, '.');
    std::int64_t version = 0;
    const char *const last = digits.data() + digits.size();
    const auto [end, problem] = std::from_chars(digits.data(), last, version);
    return problem == std::errc{} && end == last && static_cast<double>(version) < least;
}

} // namespace skyflare
