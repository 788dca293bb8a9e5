#include "watch/AnalyticsEventText.h"

#include "logging/Timestamp.h"
#include "platform/base/Text.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

struct ValueText {
    std::string operator()(const std::string &text) const { return skyflare::quoted(text); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return shortestDecimal(number); }
    std::string operator()(const APMValue::Array &items) const
    {
        std::string result = "[";
        for (const APMParameters &item : items) {
            result += result.size() > 1 ? ", {" : "{";
            for (const APMParameter &parameter : item)
                result += (&parameter == item.data() ? "" : ", ") + nameText(parameter.name) + " = " +
                          valueText(parameter.value);
            result += '}';
        }
        return result + "]";
    }
};

bool isPlain(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') || character == '_' || character == '+';
}

} // namespace

std::string valueText(const APMValue &value)
{
    return std::visit(ValueText{}, value.held());
}

std::string nameText(const std::string &name)
{
    return !name.empty() && std::ranges::all_of(name, isPlain) ? name : skyflare::quoted(name);
}

std::string momentText(double secondsSince1970)
{
    constexpr double yearTenThousand = 253'402'300'800;
    if (!(std::abs(secondsSince1970) < yearTenThousand))
        return shortestDecimal(secondsSince1970);
    return localTimestamp(secondsSince1970).value_or(isoTimestamp(secondsSince1970));
}

std::string eventText(const RawEvent &event)
{
    const APMEvent &what = event.event;
    std::string text = momentText(what.timestamp) + "  " + nameText(what.name) + "  from " +
                       nameText(what.origin) + (event.isRealtime == IsRealtime::Yes ? ", at once\n" : "\n");
    for (const APMParameter &parameter : what.parameters)
        text += "    " + nameText(parameter.name) + " = " + valueText(parameter.value) + "\n";
    return text;
}

} // namespace skyflare
