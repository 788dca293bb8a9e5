#include "analytics/pipeline/APMConsoleMonitor.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace skyflare {

namespace {

bool isProblem(APMMonitor::Level level)
{
    return level == APMMonitor::Level::Error || level == APMMonitor::Level::Warning;
}

std::string_view nameOf(APMMonitor::Level level)
{
    constexpr std::array<std::string_view, 4> names{"error", "warning", "info", "debug"};
    return names.at(static_cast<std::size_t>(level));
}

bool isAsciiControl(char character)
{
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
}

/// Whether a character of several bytes ends lines or commands a terminal: U+0080 to U+009F, U+2028, U+2029.
std::size_t lengthOfControlAt(std::string_view text)
{
    const bool isC1 =
        text.starts_with('\xC2') && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0;
    const bool isSeparator = text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9");
    return isC1 ? 2 : isSeparator ? 3 : 0;
}

/// Each control character becomes a space.
std::string oneLine(std::string_view message)
{
    const std::string valid = validUtf8(message);
    std::string line;
    line.reserve(valid.size());
    for (std::string_view rest = valid; !rest.empty();) {
        const std::size_t length = lengthOfControlAt(rest);
        line += length > 0 || isAsciiControl(rest.front()) ? ' ' : rest.front();
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return line;
}

} // namespace

bool APMConsoleMonitor::isLogging(Level level) const
{
    return isProblem(level) || modes_.verboseLogging;
}

void APMConsoleMonitor::log(Level level, int messageCode, std::string_view message)
{
    if (!isLogging(level))
        return;
    std::string line("<AppMeasurement> ");
    line.append(nameOf(level)).append(" ").append(std::to_string(messageCode)).append(": ");
    line += oneLine(message);
    if (!isProblem(level))
        console_.printLine(line);
    else if (const auto problem = problems_.toWrite(std::move(line), clock_.secondsOfUptime()))
        console_.reportLine(*problem);
}

} // namespace skyflare
