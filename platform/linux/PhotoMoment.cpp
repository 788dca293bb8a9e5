#include "platform/linux/PhotoMoment.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace skyflare {
namespace {

template <typename... Numbers> std::string format(const char *pattern, Numbers... numbers)
{
    char text[96];
    std::snprintf(text, sizeof text, pattern, numbers...);
    return text;
}

} // namespace

PhotoMoment photoMoment(std::chrono::milliseconds since1970)
{
    const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(since1970);
    const int fraction = static_cast<int>((since1970 - wholeSeconds).count());
    const std::time_t seconds = wholeSeconds.count();
    std::tm t{};
    localtime_r(&seconds, &t);
    const int year = t.tm_year + 1900;
    const int month = t.tm_mon + 1;
    const long offsetMinutes = t.tm_gmtoff / 60;
    const long magnitude = std::labs(offsetMinutes);
    return {format("%04d:%02d:%02d %02d:%02d:%02d", year, month, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec),
            format("%03d", fraction),
            format("%c%02ld:%02ld", offsetMinutes < 0 ? '-' : '+', magnitude / 60, magnitude % 60),
            format("Skyflare %04d-%02d-%02d %02d.%02d.%02d.%03d", year, month, t.tm_mday, t.tm_hour, t.tm_min,
                   t.tm_sec, fraction)};
}

} // namespace skyflare
