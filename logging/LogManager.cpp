#include "logging/LogManager.h"

#include "analytics/FIRAnalytics.h"
#include "logging/Timestamp.h"
#include "platform/base/Text.h"

#include <array>
#include <cstddef>

namespace skyflare {

namespace {

constexpr std::array<std::string_view, 7> eventNames{
    "start_capture", "stop_capture",     "catch_photo",           "button_tapped",
    "photo_saved",   "photo_auto_saved", "attempt_to_save_photo",
};

/// The engine knows one width of each kind of number.
struct ValueForEngine {
    PropertyList operator()(const std::string &text) const { return text; }
    PropertyList operator()(std::int64_t number) const { return number; }
    PropertyList operator()(double number) const { return number; }
};

PropertyList::Dictionary forEngine(const LogParameters &parameters)
{
    PropertyList::Dictionary result;
    for (const auto &[key, value] : parameters)
        result.emplace(key, std::visit(ValueForEngine{}, value));
    return result;
}

struct ValueDescription {
    std::string operator()(const std::string &text) const { return skyflare::quoted(text); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(float number) const { return shortestDecimal(number); }
    std::string operator()(double number) const { return shortestDecimal(number); }
};

std::string description(const LogParameters &parameters)
{
    std::string result = "[";
    for (const auto &[key, value] : parameters) {
        if (result.size() > 1)
            result += ", ";
        result += skyflare::quoted(key) + ": " + std::visit(ValueDescription{}, value);
    }
    return result + "]";
}

} // namespace

std::string_view eventName(LogEvent event)
{
    return eventNames[static_cast<std::size_t>(event)];
}

void LogManager::logEvent(LogEvent event, const LogParameters &parameters)
{
    const std::string_view name = eventName(event);
    LogParameters merged = parameters; // The caller's "timestamp" goes before ours.
    merged.try_emplace("timestamp", timestamp());
    FIRAnalytics::logEventWithName(std::string(name), forEngine(merged));
    console_.printLine("Logged event: " + std::string(name) + " with parameters: " + description(merged));
}

std::string LogManager::timestamp() const
{
    const double now = clock_.secondsSince1970();
    if (auto local = localTimestamp(now))
        return *std::move(local);
    return isoTimestamp(now);
}

} // namespace skyflare
