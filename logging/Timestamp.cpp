#include "logging/Timestamp.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace skyflare {

std::optional<std::string> localTimestamp(double secondsSince1970)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat formatter(icu::UnicodeString(u"yyyy-MM-dd HH:mm:ss ZZZZ"), status);
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    // A fallback locale is a warning, which is no failure.
    if (U_FAILURE(status) || !zone)
        return std::nullopt;
    formatter.adoptTimeZone(zone.release());

    icu::UnicodeString text;
    formatter.format(std::floor(secondsSince1970) * 1000.0, text);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

std::string isoTimestamp(double secondsSince1970)
{
    using namespace std::chrono;
    const sys_seconds moment{seconds(static_cast<std::int64_t>(std::floor(secondsSince1970)))};
    const auto day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss time{moment - day};

    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

} // namespace skyflare
