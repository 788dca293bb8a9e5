#include "analytics/validation/APMDataTypeValidator.h"
#include "analytics/validation/ErrorMarker.h"
#include "analytics/validation/EventParameterFilter.h"
#include "analytics/validation/ReservedNames.h"
#include "tests/fakes/RecordingMonitor.h"

#include <doctest/doctest.h>

#include <new>

using namespace skyflare;

namespace {

using Level = APMMonitor::Level;
using Code = FailureCode;
using Dictionary = PropertyList::Dictionary;

std::string times(int count, std::string_view text)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string a(int count)
{
    return times(count, "a");
}

APMValue value(std::string text)
{
    return APMValue(std::move(text));
}

/// A check of a name or value, what it is given, and what it says.
struct Row {
    Verdict (APMDataTypeValidator::*check)(const APMObject &) const;
    APMObject object;
    Code expected;
    int messageCode = 0; ///< 0: no line
    std::string_view message = {};
};

void check(std::initializer_list<Row> rows, Level level = Level::Error)
{
    RecordingMonitor monitor;
    const APMDataTypeValidator validator(monitor, {});
    for (const Row &row : rows) {
        CAPTURE(&row - rows.begin());
        CHECK((validator.*row.check)(row.object).failureCode == row.expected);
        const auto lines = monitor.takeLines();
        REQUIRE(lines.size() == (row.messageCode == 0 ? 0 : 1));
        if (lines.empty())
            continue;
        CHECK(lines[0].level == level);
        CHECK(lines[0].messageCode == row.messageCode);
        if (!row.message.empty())
            CHECK(lines[0].message == row.message);
    }
}

using V = APMDataTypeValidator;
constexpr std::string_view emoji = "\U0001F386";
constexpr auto illegal = Code::IllegalCharacters;

bool isMemoryShort = false;

} // namespace

/// What asks for memory and copes without it gets none while that is short.
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return isMemoryShort ? nullptr : ::operator new[](size);
}

TEST_CASE("a name is refused by the first rule that it breaks")
{
    check({
        {&V::isValidPublicEventName, "level_up", Code::Valid},
        {&V::isValidPublicEventName, std::nullopt, Code::Missing, 13001,
         "Event name is required and can't be nil"},
        {&V::isValidPublicEventName, APMObject::Other{"NSData"}, Code::WrongType, 13000,
         "Event name must be of type NSString: NSData"},
        {&V::isValidPublicEventName, "", Code::Missing, 13001, "Event name is required and can't be empty"},
        {&V::isValidPublicEventName, a(40), Code::Valid},
        {&V::isValidPublicEventName, a(41), Code::TooLong, 13000,
         "Event name is too long. The maximum supported length is 40: "
         "\"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\""},
        {&V::isValidPublicEventName, times(41, "-"), Code::TooLong, 13000},
        {&V::isValidPublicEventName, "a-b\n", illegal, 13002},
        {&V::isValidPublicEventName, "_x", illegal, 13003},
        {&V::isValidPublicEventName, "1x", illegal, 13003},
        {&V::isValidInternalEventName, "_x", Code::Valid},
        {&V::isValidInternalEventName, "first_open", Code::Valid},
        {&V::isValidPublicEventName, "first_open", Code::Reserved, 13006},
        {&V::isValidPublicEventName, "ga_campaign", Code::Reserved, 13006},
        {&V::isValidPublicEventName, "screen_view", Code::Valid},
        {&V::isValidPublicEventName, "firebase_x", Code::Reserved, 13007},
        {&V::isValidPublicEventParameterName, "mipeme_x", Code::Reserved, 13008},
        {&V::isValidInternalEventParameterName, "ga_x", Code::Valid},
        {&V::isValidPublicUserAttributeName, a(24), Code::Valid},
        {&V::isValidPublicUserAttributeName, a(25), Code::TooLong, 13000},
        {&V::isValidPublicUserAttributeName, "user_id", Code::Reserved, 13009},
        {&V::isValidPublicUserAttributeName, "ga_x", Code::Reserved, 13010},
        {&V::isValidInternalEventOrigin, a(33), Code::TooLong, 13000},
        {&V::isValidForwardedEventOrigin, "abc+gtm", Code::Valid},
        {&V::isValidForwardedEventOrigin, "abc", Code::NotForwarded, 13000},
        {&V::isValidForwardedEventOrigin, "+gtm", Code::Missing, 13001},
        {&V::isValidForwardedEventOrigin, a(32) + "+gtm", Code::Valid},
        {&V::isValidForwardedEventOrigin, a(33) + "+gtm", Code::TooLong, 13000},
        // Letters and digits are those of all scripts, and ill-formed text has none.
        {&V::isValidPublicEventName, "\u00E9t\u00E9_\u4E2D\u6587", Code::Valid},
        {&V::isValidPublicEventName, "e\u0301t\u00E9", illegal, 13002}, // a combining mark is no letter
        {&V::isValidPublicEventName, "a\u0663", Code::Valid},           // Arabic-Indic three: a decimal digit
        {&V::isValidPublicEventName, "\u0663a", illegal, 13003},
        {&V::isValidPublicEventName, "a\u00B2", illegal, 13002}, // superscript two: no decimal digit
        {&V::isValidPublicEventName, "a\u2167", illegal, 13002}, // Roman numeral: a number, no digit
        {&V::isValidPublicEventName, emoji, illegal, 13002},
        {&V::isValidPublicEventName, std::string_view("a\0b", 3), illegal, 13002},
        {&V::isValidPublicEventName, "a\xC3", illegal, 13002},         // cut short
        {&V::isValidPublicEventName, "\xC0\x80", illegal, 13002},      // NUL, too long
        {&V::isValidPublicEventName, "a\xED\xA0\x80", illegal, 13002}, // a surrogate
        {&V::isValidPublicEventName, "a\xF4\x90\x80\x80", illegal, 13002},
    });
}

TEST_CASE("a value is measured in code points")
{
    const std::string_view unended = "\xF0\x9F\x8E"; // one character that never ends
    check(
        {
            {&V::isValidPublicEventParameterValue, std::nullopt, Code::Missing, 13004,
             "Event parameter value cannot be nil"},
            {&V::isValidPublicEventParameterValue, "bare", Code::WrongType, 13005},
            {&V::isValidPublicEventParameterValue, value(""), Code::Valid},
            {&V::isValidPublicEventParameterValue, value(times(500, emoji)), Code::Valid},
            {&V::isValidPublicEventParameterValue, value(times(501, emoji)), Code::TooLong, 13000},
            {&V::isValidPublicEventParameterValue, value(times(500, "\xFF")), Code::Valid},
            {&V::isValidPublicEventParameterValue, value(times(500, unended)), Code::Valid},
            {&V::isValidPublicEventParameterValue, value(times(501, unended)), Code::TooLong, 13000},
            {&V::isValidPublicUserAttributeValue, value(""), Code::Missing}, // in silence
            {&V::isValidPublicUserAttributeValue, value(a(36)), Code::Valid},
            {&V::isValidPublicUserAttributeValue, value(a(37)), Code::TooLong, 13000},
            {&V::isValidNumericValue, APMValue(1.5), Code::Valid},
            {&V::isValidNumericValue, value("7"), Code::NotNumeric, 13011},
            {&V::isValidCurrencyCode, "usd", Code::Valid},
            {&V::isValidCurrencyCode, "US", Code::BadCurrencyCode, 13012,
             "Event parameter value must contain a 3-letter ISO_4217 currency code. value: \"US\""},
            {&V::isValidCurrencyCode, "U5D", Code::BadCurrencyCode, 13012},
            {&V::isValidCurrencyCode, "Ue\u0301", Code::BadCurrencyCode, 13012},
            {&V::isValidCurrencyCode, APMValue(1.5), Code::BadCurrencyCode, 13012},
        },
        Level::Warning);
    check({
        {&V::isValidConditionalUserPropertyValue, value(""), Code::Missing, 13001},
        {&V::isValidScreenParameterValue, times(501, emoji), Code::TooLong, 13000},
    });

    RecordingMonitor monitor;
    const APMDataTypeValidator narrow(monitor, {.publicValueLength = 100});
    CHECK(narrow.isValidPublicEventParameterValue(value(a(101))).failureCode == Code::TooLong);
    CHECK(narrow.isValidInternalEventParameterValue(value(a(256))));
    CHECK_FALSE(narrow.isValidInternalEventParameterValue(value(a(257))));
    for (const auto &[name, longest] :
         {std::pair("_id", 256), {"_gbraid", 256}, {"_psmvalue", 512}, {"_npa", 36}}) {
        CHECK(narrow.isValidInternalUserAttributeValue(value(a(longest)), name));
        CHECK_FALSE(narrow.isValidInternalUserAttributeValue(value(a(longest + 1)), name));
    }
    monitor.lines.clear();
    CHECK(narrow.isValidString("\u00FC", 2, 9, APMDataType{10}).failureCode == Code::TooShort);
    CHECK(monitor.lines.at(0).message ==
          "Object is too short. The minimum supported length is 2: \"\u00FC\"");
}

TEST_CASE("an array is refused by the first rule that it breaks")
{
    RecordingMonitor monitor;
    const APMDataTypeValidator validator(monitor, {});
    struct Array {
        std::string_view event, name;
        std::size_t count;
        IsNestedArrayParam isNested;
        Code expected;
        std::string_view message;
    };
    using enum IsNestedArrayParam;
    const Array arrays[] = {{"level_up", "things", 201, Yes, Code::NestedArray,
                             "Nested array parameters are not allowed. Name: \"things\""},
                            {"level_up", "things", 201, No, Code::ArrayNotAllowed,
                             "Only ecommerce events are allowed to contain array parameters. Invalid "
                             "ecommerce name: \"level_up\""},
                            {"purchase", "things", 201, No, Code::ArrayName,
                             "Event parameter name is an invalid ecommerce items. The name of array "
                             "parameters for ecommerce should "
                             "be \"items\". Invalid parameter name: \"things\""},
                            {"purchase", "items", 201, No, Code::TooManyItems,
                             "Array parameter has too many items. The maximum number of supported items is "
                             "200. Invalid array size: "
                             "201"}};
    for (const auto &[event, name, count, isNested, expected, message] : arrays) {
        CHECK(validator.isValidArrayParamForEvent(event, name, count, isNested).failureCode == expected);
        CHECK(monitor.lines.back() == RecordingMonitor::Line{Level::Error, 13013, std::string(message)});
    }
    CHECK(validator.isValidArrayParamItem(PropertyList(true)).failureCode == Code::ItemNotDictionary);
}

TEST_CASE("parameters that may not be recorded go alone, and the first one makes the marker")
{
    struct Event {
        std::string_view name;
        Dictionary parameters;
        std::string_view kept;   ///< the names
        std::string_view marker; ///< error code, name, length
    };
    const std::string text("t");
    const PropertyList usd(std::string("USD"));
    const auto items = [](const Dictionary &item) {
        return PropertyList(PropertyList::Array{PropertyList(item)});
    };
    Dictionary full;
    for (int i = 100; i < 201; ++i)
        full.emplace("p" + std::to_string(i), true);
    Dictionary item{{"item_id", text}};
    for (int i = 10; i < 38; ++i)
        item.emplace("c" + std::to_string(i), 1.0);
    const Event events[] = {
        {"e", {{"a", true}, {"b", times(500, emoji)}}, " a b", ""},
        {"e", {{"_a", true}, {"b", Bytes{1}}, {"c", text}}, " c", " 3 _a"},
        {"e", {{"ga_a", true}}, "", " 14 ga_a"},
        {"e", {{"b", Bytes{1}}, {"c", Dictionary{}}}, "", " 4 b"},
        {"e", {{"b", times(501, emoji)}}, "", " 4 b 501"},
        {"e", {{"items", items({})}}, "", " 21 items"},
        {"purchase", {{"goods", items({})}}, "", " 20 goods"},
        {"purchase", {{"items", PropertyList::Array(200, Dictionary{})}}, " items", ""},
        {"purchase", {{"items", PropertyList::Array(201, Dictionary{})}}, "", " 4 items 201"},
        {"purchase", {{"items", PropertyList::Array{Dictionary{}, true}}}, "", " 4 items 2"},
        {"purchase", {{"items", items({{"index", items({})}})}}, " items", " 22 index"},
        {"purchase", {{"items", items(item)}}, " items", " 24 c37"},
        {"e", {{"value", 1.0}}, "", " 19 value"},
        {"e", {{"currency", text}, {"value", 1.0}}, " currency", " 19 value"},
        {"e", {{"currency", usd}, {"value", true}}, " currency value", ""},
        {"e", {{"currency", usd}, {"value", text}}, " currency", " 18 value"},
    };
    RecordingMonitor monitor;
    const EventParameterFilter filter(monitor, {});
    for (const Event &event : events) {
        CAPTURE(&event - &events[0]);
        const auto filtered = filter.filter(event.name, IsPublicEvent::Yes, event.parameters);
        std::string kept;
        for (const APMParameter &parameter : filtered.parameters)
            kept += " " + parameter.name;
        CHECK(kept == event.kept);
        APMParameters marker;
        if (!filtered.refusals.empty())
            addErrorMarker(marker, filtered.refusals.front(), monitor);
        std::string told;
        for (const APMParameter &parameter : marker)
            told += " " + (parameter.value.text() ? *parameter.value.text()
                                                  : std::to_string(*parameter.value.integer()));
        CHECK(told == event.marker);
    }
    monitor.lines.clear();
    const auto filtered = filter.filter("e", IsPublicEvent::Yes, full);
    CHECK(filtered.parameters.size() == 100);
    CHECK(filtered.parameters[0].value == APMValue(std::int64_t{1}));
    CHECK(filtered.refusals.at(0).errorCode() == APMErrorCode::ParameterLimitReached);
    CHECK(monitor.lines.at(0).message == "Event cannot contain more than 100 parameters");
    CHECK(filter.filter("_e", IsPublicEvent::No, full).parameters.size() == 101);

    const EventParameterFilter strict(monitor, {.allowsCustomItemParameters = false});
    const auto bare = strict.filter("purchase", IsPublicEvent::Yes, {{"items", items(item)}});
    CHECK((bare.parameters.at(0).value == APMValue(APMValue::Array{{{"item_id", value("t")}}})));
    CHECK(bare.refusals.size() == 28);
    CHECK(bare.refusals.at(27).errorCode() == APMErrorCode::CustomParamsInArrayElement);
}

TEST_CASE("what is too long is cut between two characters, and where memory is short not at all")
{
    RecordingMonitor monitor;
    CHECK(trimmed(times(41, emoji), 40, monitor) == times(40, emoji) + "...");
    isMemoryShort = true;
    CHECK(trimmed("four", 3, monitor) == "four");
    isMemoryShort = false;
    CHECK(monitor.lines.at(0) ==
          RecordingMonitor::Line{Level::Error, 18000, "Failed to malloc bytes for trimming. Bytes: 12"});
}
