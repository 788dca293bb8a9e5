#include "platform/cloud/FIRRemoteConfig.h"

#include "platform/base/Files.h"
#include "tests/fakes/FakeHttpTransport.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

using namespace skyflare;
using namespace std::chrono_literals;

namespace {

const std::string address = "https://config.example/app.json";

HttpResponse response(int status, std::string_view body, const std::string &etag = {})
{
    HttpResponse made{.status = status, .body = {body.begin(), body.end()}};
    if (!etag.empty())
        made.headers.push_back({"etag", etag});
    return made;
}

struct ConfigFixture {
    TemporaryFolder folder;
    std::filesystem::path file = folder / "cache" / "remote-config.json";
    VirtualTime time;
    RecordingConsole console;
    FakeHttpTransport network;
    std::shared_ptr<FIRRemoteConfig> config = make();
    std::vector<std::string> outcomes;

    std::shared_ptr<FIRRemoteConfig> make()
    {
        return FIRRemoteConfig::make({network, time, time, console, file});
    }
    void restart(const std::string &url = address)
    {
        config = make();
        config->setMinimumFetchInterval(0);
        config->configure(url);
    }
    void startFetch()
    {
        config->fetchAndActivateWithCompletionHandler(time.mainQueue(), [this](const auto &outcome) {
            CHECK(time.mainQueue().isCurrent());
            const auto fetched = FetchAndActivateStatus::SuccessFetchedFromRemote;
            outcomes.push_back(!outcome ? outcome.error().message : *outcome == fetched ? "fetched" : "kept");
        });
    }
    /// What a fetch ends with that is answered so, if anybody is asked.
    std::string fetch(Result<HttpResponse> answer = Error{"test", 0, "not to be asked for"})
    {
        network.answers = {std::move(answer)};
        outcomes.clear();
        startFetch();
        CHECK(outcomes.empty()); // only after the call has returned
        time.runUntilIdle();
        REQUIRE(outcomes.size() == 1);
        return outcomes[0];
    }
    double number(std::string_view key) const { return config->configValueForKey(key).numberValue(); }
    std::string string(std::string_view key) const { return config->configValueForKey(key).stringValue(); }
};

} // namespace

TEST_CASE("a value is a text and a number by fixed rules")
{
    // As it stands in the answer, as text, as a number.
    const std::vector<std::tuple<std::string, std::string, double>> rows{
        {"111", "111", 111},       {"1.50", "1.5", 1.5},
        {"\"111\"", "111", 111},   {"\" 1e2\\n\"", " 1e2\n", 100},
        {"\"1.2.3\"", "1.2.3", 0}, {"\"0x10\"", "0x10", 0},
        {"\"inf\"", "inf", 0},     {"\"1e999\"", "1e999", 0},
        {"\"\"", "", 0},           {"true", "true", 1},
        {"false", "false", 0},     {"null", "", 0},
        {"[1]", "[1]", 0},         {"{\"a\": \"ş\"}", "{\"a\":\"ş\"}", 0}};
    for (const auto &row : rows) {
        const auto &[json, string, number] = row;
        INFO(std::get<0>(row));
        const auto values = parseRemoteConfig("{\"key\": " + json + "}");
        REQUIRE(values);
        CHECK(values->at("key").stringValue() == string);
        CHECK(values->at("key").numberValue() == number);
    }
    CHECK(FIRRemoteConfigValue("{\"message\": \"Hi\"}", 0).textsByKey()->at("message") == "Hi");
    CHECK(FIRRemoteConfigValue("{}", 0).textsByKey()->empty());
    for (const char *other : {"", "Hi", "[\"Hi\"]", "{\"message\": 1}", "{\"message\": \"Hi\""})
        CHECK(!FIRRemoteConfigValue(other, 0).textsByKey());
}

TEST_CASE_FIXTURE(ConfigFixture, "a fetch before the set-up waits for it, and several share one request")
{
    config->setMinimumFetchInterval(0);
    startFetch();
    startFetch();
    time.runUntilIdle();
    CHECK(network.requests.empty());
    config->configure(address);
    startFetch();
    time.runUntilIdle();
    REQUIRE(network.requests.size() == 1);
    CHECK(network.requests[0].url == address);
    CHECK(network.requests[0].maximumAnswerBytes == 65536);
    CHECK(network.requests[0].timeLimit == 10s);
    network.answer(response(200, R"({"forceUpdateVersion": 111})"));
    time.runUntilIdle();
    CHECK(outcomes == std::vector<std::string>{"fetched", "fetched", "fetched"});
    CHECK(number("forceUpdateVersion") == 111);
}

TEST_CASE_FIXTURE(ConfigFixture, "the last good values outlast bad answers, a restart, and both")
{
    restart();
    CHECK(fetch(response(200, R"({"a": 1, "b": "two"})", "\"v1\"")) == "fetched");
    const auto isKept = [&] { return number("a") == 1 && string("b") == "two"; };
    CHECK(isKept());
    const auto failures = [&] {
        CHECK(fetch(response(500, R"({"a": 5})")) == "the server answers with status 500");
        const std::string deep = "{\"a\": " + std::string(30'000, '[') + std::string(30'000, ']') + "}";
        for (const std::string_view bad :
             {"", "<html>", "[1]", "\"a\"", "{\"a\": 5", "{\"a\": \"\xff\"}", "{\"a\": 1e999}", deep.c_str()})
            CHECK(fetch(response(200, bad)) == "the answer is no JSON object");
        CHECK(fetch(httpError(HttpFailure::TimedOut, "too slow")) == "too slow");
        CHECK(isKept());
    };
    failures();
    restart();
    CHECK(isKept());
    failures();
    CHECK(network.requests.back().headers.back().name == "If-None-Match");
    CHECK(network.requests.back().headers.back().value == "\"v1\"");
    CHECK(fetch(response(304, "")) == "kept");
    CHECK(isKept());

    CHECK(fetch(response(200, R"({"a": 2})")) == "fetched"); // whole: "b" is gone, and so is the tag
    CHECK(number("a") == 2);
    CHECK(string("b").empty());
    CHECK(fetch(response(304, "")) == "the server answers with status 304"); // to what was not asked

    restart("https://other.example/"); // its values are not these
    CHECK(number("a") == 0);
    network.requests.clear();
    restart(""); // nobody to ask
    CHECK(fetch() == "kept");
    CHECK(number("a") == 0);
    CHECK(network.requests.empty());
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(ConfigFixture, "a damaged cache is forgotten, one that cannot be written reported once")
{
    restart();
    CHECK(fetch(response(200, R"({"a": 1})")) == "fetched");
    const Bytes whole = readFile(file).value();
    const std::string sound(whole.begin(), whole.end());
    for (const std::string &content :
         {sound.substr(0, sound.size() / 2), std::string("{}"), std::string(2'000'000, ' ') + sound}) {
        console.clear();
        folder.write(file, content);
        restart();
        CHECK(number("a") == 0);
        REQUIRE(console.reports().size() == 1);
        CHECK(console.reports()[0].starts_with("The last remote configuration is lost: "));
    }
    std::filesystem::remove_all(file.parent_path());
    folder.write("cache", "a file where the folder belongs");
    console.clear();
    for (int count = 0; count < 2; ++count)
        CHECK(fetch(response(200, R"({"a": 3})")) == "fetched");
    CHECK(number("a") == 3);
    CHECK(console.reports().size() == 1);
}

TEST_CASE_FIXTURE(ConfigFixture, "values that are young enough are not fetched again")
{
    restart();
    CHECK(fetch(response(200, R"({"a": 1})")) == "fetched");
    config = make();
    config->configure(address);
    time.advance(12h - 1s);
    CHECK(fetch() == "kept");
    CHECK(network.requests.size() == 1);
    time.advance(1s);
    CHECK(fetch(response(200, R"({"a": 2})")) == "fetched");
    VirtualTime earlier(1'600'000'000); // a clock that was wrong
    config = FIRRemoteConfig::make({network, time, earlier, console, file});
    config->configure(address);
    CHECK(fetch(response(200, R"({"a": 3})")) == "fetched");
}
