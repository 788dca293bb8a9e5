#include "analytics/validation/RefusalLog.h"

#include "platform/base/Text.h"

namespace skyflare {

namespace {

constexpr std::size_t longestShown = 200; ///< bytes of a text at fault; it may be of any length

std::string shown(std::string_view text)
{
    const bool isLong = text.size() > longestShown;
    return quoted(validUtf8(text.substr(0, longestShown))) + (isLong ? "..." : "");
}

struct ValueDescription {
    std::string operator()(const std::string &text) const { return shown(text); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return shortestDecimal(number); }
    std::string operator()(const APMValue::Array &array) const
    {
        return "an array of " + std::to_string(array.size()) + " items";
    }
};

} // namespace

std::string described(const APMObject &object)
{
    if (const std::string_view *text = object.text())
        return shown(*text);
    if (const APMValue *value = object.value())
        return std::visit(ValueDescription{}, value->held());
    return object.isNil() ? "(nil)" : std::string(object.other()->className);
}

void RefusalLog::write(APMMonitor::Level level, const RefusalMessage &message, const Details &details) const
{
    if (!monitor_->isLogging(level))
        return;
    std::string line(details.label);
    line += message.text;
    if (details.number) {
        constexpr std::string_view placeholder = "%d";
        if (const std::size_t at = line.find(placeholder); at != std::string::npos)
            line.replace(at, placeholder.size(), std::to_string(*details.number));
    }
    if (details.value)
        line += ": " + described(*details.value);
    monitor_->log(level, message.code, line);
}

} // namespace skyflare
