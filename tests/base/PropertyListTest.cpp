#include "platform/base/PropertyList.h"

#include "platform/base/Text.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

using namespace skyflare;

namespace {

PropertyList sample()
{
    return PropertyList::Dictionary{
        {"flag", true},
        {"least", std::numeric_limits<std::int64_t>::min()},
        {"most", std::numeric_limits<std::int64_t>::max()},
        {"minus", std::int64_t{-300}},
        {"text", std::string("Ayşe 🎆")},
        {"data", Bytes{0, 255, 0}},
        {"nothing", Bytes{}},
        {"list", PropertyList::Array{std::string(), PropertyList::Dictionary{}, 0.1}},
    };
}

} // namespace

TEST_CASE("a property list reads back as it was written")
{
    const auto back = PropertyList::parse(sample().serialize());
    REQUIRE(back);
    CHECK(*back == sample());

    for (const double number :
         {0.1, 0.4000000059604645, -0.0, 0.0, 5e-324, 1.7976931348623157e308, 1.0 / 3}) {
        CAPTURE(number);
        const auto real =
            PropertyList::parse(PropertyList(PropertyList::Array{number, 0.0, -0.0}).serialize());
        REQUIRE(real);
        const double first = *real->as<PropertyList::Array>()->at(0).as<double>();
        CHECK(std::bit_cast<std::uint64_t>(first) == std::bit_cast<std::uint64_t>(number));
    }
}

TEST_CASE("text that is no UTF-8 does not make a list unreadable")
{
    const PropertyList list = PropertyList::Dictionary{{"\xE9t\xE9", std::string("a\0b\xC3", 4)}};
    const auto back = PropertyList::parse(list.serialize());
    REQUIRE(back);
    CHECK(*back == PropertyList(PropertyList::Dictionary{{"\uFFFDt\uFFFD", std::string("a\uFFFDb\uFFFD")}}));
    CHECK(validUtf8("ş€🎆") == "ş€🎆");
    CHECK(validUtf8("\xC0\x80|\xED\xA0\x80|\xF4\x90\x80\x80|\xF0\x9F\x8E") ==
          "\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD");
}

TEST_CASE("what is no whole property list is an error")
{
    const Bytes binary = sample().serialize();
    const std::string_view xml =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><true/></array></plist>";
    for (const Bytes &whole : {binary, Bytes(xml.begin(), xml.end())}) {
        REQUIRE(PropertyList::parse(whole));
        for (std::size_t length = 0; length < whole.size(); ++length) {
            CAPTURE(length);
            CHECK_FALSE(PropertyList::parse(std::span(whole).first(length)));
        }
    }
    Bytes longer = binary;
    longer.push_back(0);
    CHECK_FALSE(PropertyList::parse(longer));
    for (const std::string_view text :
         {"garbage", "<plist>garbage</plist>", "<plist><true/></plist>more", "<plist><dict></plist>",
          "<plist><date>2024-01-01T00:00:00Z</date></plist>", "{\"a\": 1}"}) {
        CAPTURE(text);
        CHECK_FALSE(PropertyList::parse(Bytes(text.begin(), text.end())));
    }
}

TEST_CASE("numbers print in the shortest decimal that reads back the same")
{
    CHECK(shortestDecimal(0.1F) == "0.1");
    CHECK(shortestDecimal(static_cast<double>(0.1F)) == "0.10000000149011612");
    CHECK(shortestDecimal(1.0) == "1.0");
    CHECK(shortestDecimal(-0.0) == "-0.0");
    CHECK(shortestDecimal(0.0001) == "0.0001");
    CHECK(shortestDecimal(0.00001F) == "1e-05");
    CHECK(shortestDecimal(16777216.0F) == "16777216.0");
    CHECK(shortestDecimal(16777218.0F) == "1.6777218e+07");
    CHECK(shortestDecimal(1e16) == "1e+16");
    CHECK(shortestDecimal(5e-324) == "5e-324");
    CHECK(shortestDecimal(-std::numeric_limits<double>::infinity()) == "-inf");
    CHECK(shortestDecimal(-std::nan("")) == "nan");
}
