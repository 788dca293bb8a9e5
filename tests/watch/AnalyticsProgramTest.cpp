// What a run records of itself, as the whole program shows it.

#include "platform/base/Files.h"
#include "platform/base/PropertyList.h"
#include "tests/fakes/HttpServer.h"
#include "tests/fakes/NetworkTrace.h"
#include "tests/watch/WatchFixture.h"

#include <doctest/doctest.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>

using namespace skyflare;
using nlohmann::json;

namespace {

struct Recorded {
    std::vector<json> events; ///< of the app's own
    json status;
};

struct RecordingFixture : WatchFixture {
    const std::filesystem::path measured = folder / "data/state/mipeme-app-measurement.sql";

    const std::string show = film("show.mp4", 60, "eq(N,10)+eq(N,50)"); ///< two bursts, two photos

    [[nodiscard]] std::vector<std::string> watchShow(std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {show, "--json", "--quiet", "--sensitivity", "high", "--arm-after", "0"});
        return command(more);
    }

    /// What a program prints that is to succeed.
    static std::vector<std::string> output(const std::vector<std::string> &arguments)
    {
        ChildProcess process(arguments);
        auto lines = process.readAll();
        const int status = process.wait();
        CAPTURE(process.errors());
        CHECK(status == 0);
        CHECK(process.errors().empty());
        return lines;
    }

    /// The program with a deployer's own files beside it.
    [[nodiscard]] std::filesystem::path deploy(const PropertyList::Dictionary &info,
                                               const std::string &appID = "") const
    {
        const auto program = folder / "skyflare-watch";
        std::filesystem::copy_file(SKYFLARE_WATCH, program, std::filesystem::copy_options::skip_existing);
        const PropertyList services = PropertyList::Dictionary{{"MIPEME_APP_ID", appID}};
        REQUIRE(replaceFile(folder / "Info.plist", PropertyList(info).serialize()));
        REQUIRE(replaceFile(folder / "MipemeService-Info.plist", services.serialize()));
        return program;
    }

    [[nodiscard]] json status() const
    {
        return json::parse(output(command({"--analytics-status", "--json"})).at(0));
    }

    /// Asks a program that is running until there are so many.
    void waitForEvents(std::int64_t atLeast) const
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
        for (json database; database.is_null() || database.at("waiting_events") < atLeast;) {
            REQUIRE(std::chrono::steady_clock::now() < deadline);
            database = status().at("database");
        }
    }

    /// Both of what the program shows; that of the ledger and the rows balances, or it would not succeed.
    [[nodiscard]] Recorded recorded() const
    {
        Recorded result{.events = objectsOfType(output(command({"--analytics-show", "--json"})), "event"),
                        .status = status()};
        const auto waiting = result.status.at("database").at("waiting_events");
        CHECK(waiting == result.events.size());
        CHECK(result.status.at("database").at("ledger").at("balances") == true);
        std::erase_if(result.events, [](const json &event) { return event.at("origin") != "app"; });
        return result;
    }
};

std::vector<std::string> namesOf(const std::vector<json> &events)
{
    std::vector<std::string> names;
    for (const json &event : events)
        names.push_back(event.at("name"));
    return names;
}

} // namespace

TEST_CASE_FIXTURE(RecordingFixture, "a run records what it did, and shows it when it is asked")
{
    CHECK(output(command({"--analytics-show"})).at(0).starts_with("No event is waiting"));
    CHECK(status().at("database").is_null());
    CHECK_FALSE(exists(folder / "data")); // asking has left nothing behind

    const PropertyList settings = PropertyList::Dictionary{
        {"alreadyLaunched", std::string("yes")}, {"autoSave", true}, {"frequency", 1.0}};
    REQUIRE(replaceFile(folder / "data/config/standard.plist", settings.serialize()));
    CHECK(runProgram(watchShow({"--no-analytics"})) == 0);
    CHECK_FALSE(exists(measured));

    const auto lines = output(watchShow({"-FIRDebugEnabled"}));
    const auto photos = objectsOfType(lines, "photo");
    REQUIRE(photos.size() == 2);
    const auto [events, state] = recorded();
    CHECK(namesOf(events) == std::vector<std::string>{"start_capture", "catch_photo", "photo_auto_saved",
                                                      "catch_photo", "photo_auto_saved", "stop_capture"});
    const json &caught = events.at(3).at("parameters");
    CHECK(caught.contains("timestamp"));
    CHECK(caught.at("totalPhotos") == 4); // those of the run that was not measured are in the store too
    CHECK(caught.at("difference").get<double>() == doctest::Approx(photos[1].at("difference").get<double>()));
    CHECK(state.at("debug_mode") == true);
    CHECK(state.at("app_instance_id").get<std::string>().size() == 32);
    CHECK(state.at("database").at("today").at("public_events") == 6);

    std::array<char, 8> mark{};
    if (getxattr(measured.c_str(), "user.xdg.robots.backup", mark.data(), mark.size()) < 0 &&
        errno == ENOTSUP)
        MESSAGE("NOT TESTED: the temporary folder's file system has no extended attributes");
    else
        CHECK(std::string(mark.data()) == "false");

    const auto shown = output(command({"--analytics-show"}));
    CHECK(std::ranges::count_if(shown, [](const std::string &line) {
              return line.ends_with("  catch_photo  from app, at once") || line == "    totalPhotos = 4";
          }) == 3);
}

TEST_CASE_FIXTURE(RecordingFixture, "collection that a deployer has deactivated leaves no database")
{
    auto arguments = watchShow();
    arguments[0] = deploy({{"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", true}});
    CHECK(objectsOfType(output(arguments), "photo").size() == 2);
    CHECK_FALSE(exists(measured));
    const auto status =
        output({arguments[0], "--data-dir", (folder / "data").string(), "--analytics-status"});
    CHECK(std::ranges::count(status,
                             "Collection:      off, because FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED "
                             "is set in Info.plist") == 1);
}

TEST_CASE_FIXTURE(RecordingFixture, "a run asks nothing of any network unless the deployer names a host")
{
    const NetworkTrace network(folder / "trace");
    const auto traced = [&](const PropertyList::Dictionary &info, const std::string &limit) {
        auto arguments = network.command();
        arguments.push_back(deploy(info, "1:2:linux:3"));
        const auto run = command({"--camera", "simulated:64x36@30", "--sensitivity", "high", "--arm-after",
                                  "0", "--quiet", "-FIRDebugEnabled", "--duration", limit});
        arguments.insert(arguments.end(), run.begin() + 1, run.end());
        return arguments;
    };
    output(traced({}, "2"));
    CHECK(network.callsOutside() == std::vector<std::string>());
    const auto names = namesOf(recorded().events); // the last photo may come behind the end of the run
    CHECK(std::ranges::find(names, "stop_capture") != names.end());

    const HttpServer server([](const HttpServer::Request &) { return HttpServer::answer(204, ""); });
    const std::string host = server.url("");
    ChildProcess sending(traced({{"MIPEME_ANALYTICS_COLLECTION_HOST", host}}, "3600"));
    CHECK(server.waitForRequests(1));
    NetworkTrace::signal(sending, SIGINT);
    CHECK(sending.wait() == 0);
    const auto calls = network.callsOutside();
    CHECK(std::ranges::any_of(calls,
                              [](const std::string &call) { return call.find("connect(") != call.npos; }));
}

TEST_CASE_FIXTURE(RecordingFixture,
                  "a second program beside the first watches without measuring, and says so")
{
    // It never takes a photo, however long the second one takes.
    ChildProcess first(command({"--camera", "simulated:64x36@30", "--arm-after", "3600", "--quiet"}));
    waitForEvents(3); // the first one of all, the session, and the start
    ChildProcess second(watchShow());
    CHECK(objectsOfType(second.readAll(), "photo").size() == 2);
    CHECK(second.wait() == 0);
    const std::string errors = second.errors();
    CAPTURE(errors);
    CHECK(errors.starts_with("<AppMeasurement> "));
    CHECK(std::ranges::count(errors, '\n') == 1);

    CHECK(namesOf(recorded().events) == std::vector<std::string>{"start_capture"}); // while the first runs
    first.signal(SIGINT);
    CHECK(first.wait() == 0);
    CHECK(namesOf(recorded().events) == std::vector<std::string>{"start_capture", "stop_capture"});
}

TEST_CASE_FIXTURE(RecordingFixture, "whatever is wrong with the record, the run goes on and says so")
{
    struct Row {
        const char *name;
        std::function<bool(const std::filesystem::path &folder)> spoil;
        int statusBefore;
        int statusAfter;
    };
    const auto put = [](const std::filesystem::path &file) {
        return replaceFile(file, Bytes(5000, 'x')).has_value();
    };
    const Row rows[] = {
        {"a file in the folder's place", put, 0, 0},
        {"a folder in the file's place",
         [&](const auto &state) { return create_directories(state / measured.filename()); }, 1, 1},
        {"no database", [&](const auto &state) { return put(state / measured.filename()); }, 1, 0},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        std::filesystem::remove_all(measured.parent_path());
        REQUIRE(row.spoil(measured.parent_path()));
        CHECK(runProgram(command({"--analytics-status"})) == row.statusBefore);
        ChildProcess process(watchShow());
        CHECK(objectsOfType(process.readAll(), "photo").size() == 2);
        CHECK(process.wait() == 0);
        const std::string errors = process.errors();
        CAPTURE(errors);
        CHECK(errors.starts_with("<AppMeasurement> "));
        CHECK(std::ranges::count(errors, '\n') <= 3); // what SQLite says, and what comes of it
        CHECK(runProgram(command({"--analytics-status"})) == row.statusAfter);
    }
}
