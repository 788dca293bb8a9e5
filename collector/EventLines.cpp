#include "collector/EventLines.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace skyflare {

namespace {

constexpr bool isPlain(char each)
{
    return static_cast<unsigned char>(each) >= 0x20 && each != '"' && each != '\\';
}

void appendText(std::string &json, std::string_view text)
{
    static constexpr std::string_view digits = "0123456789abcdef";
    json += '"';
    while (!text.empty()) {
        const auto special = std::find_if_not(text.begin(), text.end(), isPlain);
        json.append(text.begin(), special);
        text.remove_prefix(static_cast<std::size_t>(special - text.begin()));
        if (text.empty())
            break;
        const auto byte = static_cast<unsigned char>(text.front());
        if (byte < 0x20)
            json.append("\\u00").append({digits[byte >> 4U], digits[byte & 0xFU]});
        else
            json.append({'\\', text.front()});
        text.remove_prefix(1);
    }
    json += '"';
}

void appendNumber(std::string &json, std::int64_t number)
{
    std::array<char, 24> text{};
    json.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

/// JSON has no word for what is not finite.
void appendNumber(std::string &json, double number)
{
    json += std::isfinite(number) ? shortestDecimal(number) : "null";
}

/// The last `count` digits of a number, zeros before them.
void appendDigits(std::string &json, std::int64_t number, int count)
{
    std::array<char, 8> digits{};
    for (int i = count - 1; i >= 0; --i, number /= 10)
        digits.at(static_cast<std::size_t>(i)) = static_cast<char>('0' + number % 10);
    json.append(digits.data(), static_cast<std::size_t>(count));
}

/// "2026-11-23T08:24:02.123456Z"; null outside the years that this form can write.
void appendTime(std::string &json, double secondsSince1970)
{
    using namespace std::chrono;
    constexpr double yearOne = -62135596800.0;
    constexpr double yearTenThousand = 253402300799.0;
    if (!(secondsSince1970 >= yearOne && secondsSince1970 < yearTenThousand)) {
        json += "null";
        return;
    }
    const sys_time<microseconds> time{microseconds(std::llround(secondsSince1970 * 1e6))};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    struct Part {
        std::int64_t number;
        int digits;
        char before;
    };
    const std::array<Part, 7> parts{{{int(date.year()), 4, '"'},
                                     {unsigned(date.month()), 2, '-'},
                                     {unsigned(date.day()), 2, '-'},
                                     {clock.hours().count(), 2, 'T'},
                                     {clock.minutes().count(), 2, ':'},
                                     {clock.seconds().count(), 2, ':'},
                                     {clock.subseconds().count(), 6, '.'}}};
    for (const Part &part : parts) {
        json += part.before;
        appendDigits(json, part.number, part.digits);
    }
    json += "Z\"";
}

void appendValue(std::string &json, const APMValue &value);

/// Says of each name whether it comes for the first time.
class Names {
public:
    bool isNew(std::string_view name)
    {
        if (count_ == few_.size())
            return std::ranges::find(few_, name) == few_.end() && many_.insert(name).second;
        const auto end = few_.begin() + static_cast<std::ptrdiff_t>(count_);
        if (std::find(few_.begin(), end, name) != end)
            return false;
        few_.at(count_++) = name;
        return true;
    }

private:
    std::array<std::string_view, 16> few_; // as many as most events have, without a table
    std::size_t count_ = 0;
    std::unordered_set<std::string_view> many_;
};

/// Parameters or user properties as one object. An engine sends no name twice; of a name that comes twice all
/// the same the first counts, since not every reader of JSON copes.
template <typename Range> void appendObject(std::string &json, const Range &values)
{
    Names names;
    char before = '{';
    for (const auto &each : values) {
        if (!names.isNew(each.name))
            continue;
        json += before;
        appendText(json, each.name);
        json += ':';
        appendValue(json, each.value);
        before = ',';
    }
    json += values.empty() ? "{}" : "}";
}

void appendArray(std::string &json, const APMValue::Array &items)
{
    json += '[';
    for (const APMParameters &item : items) {
        if (json.back() != '[')
            json += ',';
        appendObject(json, item);
    }
    json += ']';
}

void appendValue(std::string &json, const APMValue &value)
{
    if (const auto *text = value.text())
        appendText(json, *text);
    else if (const auto *integer = value.integer())
        appendNumber(json, *integer);
    else if (const auto *real = value.real())
        appendNumber(json, *real);
    else if (const auto *items = value.array())
        appendArray(json, *items);
}

/// ,"name": and what is behind it is the caller's.
void appendName(std::string &json, std::string_view name)
{
    json.append(",\"").append(name).append("\":");
}

/// What is not known is left out.
void appendFact(std::string &json, std::string_view name, const std::string &fact)
{
    if (fact.empty())
        return;
    appendName(json, name);
    appendText(json, fact);
}

struct AppFact {
    std::string_view name;
    std::string APMAppData::*text;
};

constexpr std::array<AppFact, 6> appFacts{{
    {"app_instance_id", &APMAppData::appInstanceId},
    {"app_version", &APMAppData::appVersion},
    {"platform", &APMAppData::platform},
    {"os_version", &APMAppData::osVersion},
    {"device_model", &APMAppData::deviceModel},
    {"language", &APMAppData::language},
}};

/// "APP_INSTANCE_ID/DATABASE_ID/INDEX": names a bundle as no other.
std::string bundleKey(const APMMeasurementBundle &bundle)
{
    return bundle.metadata.app.appInstanceId + "/" + bundle.databaseId + "/" + std::to_string(bundle.index);
}

std::string sharedPart(const APMMeasurementBundle &bundle, const Arrival &arrival)
{
    std::string json;
    appendName(json, "user_properties");
    appendObject(json, bundle.metadata.userAttributes);
    appendFact(json, "app_id", bundle.appId);
    for (const AppFact &fact : appFacts)
        appendFact(json, fact.name, bundle.metadata.app.*fact.text);
    appendFact(json, "engine_version", arrival.batch.engineVersion);
    if (arrival.batch.isDebug)
        json += ",\"debug\":true";
    appendName(json, "sent_timestamp");
    appendNumber(json, arrival.batch.uploadTimestamp);
    appendName(json, "received_timestamp");
    appendNumber(json, arrival.receivedTimestamp);
    appendFact(json, "bundle_key", bundleKey(bundle));
    appendName(json, "event_number");
    return json;
}

void appendEvent(std::string &json, const APMEvent &event)
{
    json += "{\"time\":";
    appendTime(json, event.timestamp);
    appendName(json, "timestamp");
    appendNumber(json, event.timestamp);
    appendName(json, "name");
    appendText(json, event.name);
    appendFact(json, "origin", event.origin);
    if (event.previousTimestamp != 0) {
        appendName(json, "previous_timestamp");
        appendNumber(json, event.previousTimestamp);
    }
    appendName(json, "params");
    appendObject(json, event.parameters);
}

} // namespace

EventLines::EventLines(const APMMeasurementBundle &bundle, const Arrival &arrival)
    : bundle_(bundle), shared_(sharedPart(bundle, arrival))
{
}

void EventLines::append(std::string &lines, std::size_t index) const
{
    appendEvent(lines, bundle_.events[index]);
    lines += shared_;
    appendNumber(lines, static_cast<std::int64_t>(index) + 1);
    lines += "}\n";
}

std::size_t EventLines::repeatedBytes() const
{
    constexpr std::size_t namesOfAnEvent = 256;
    return bundle_.events.size() * (shared_.size() + namesOfAnEvent);
}

} // namespace skyflare
