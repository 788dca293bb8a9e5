// What a run records of itself, as the whole program shows it.

#include "platform/base/OwnerLock.h"
#include "tests/fakes/HttpServer.h"
#include "tests/fakes/NetworkTrace.h"
#include "tests/watch/WatchFixture.h"

#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <optional>

using namespace skyflare;
using nlohmann::json;

namespace {

struct RecordingFixture : WatchFixture {
    const std::filesystem::path measured = folder / "data/state/mipeme-app-measurement.sql";

    const std::string show = film("show.mp4", 60, "eq(N,10)+eq(N,50)"); ///< two bursts, two photos

    [[nodiscard]] std::vector<std::string> watchShow(std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {show, "--json", "--quiet", "--sensitivity", "high", "--arm-after", "0"});
        return command(more);
    }

    /// The app's own events, as the program shows them; the ledger balances, or it would not succeed.
    [[nodiscard]] std::vector<json> recorded() const
    {
        auto events = objectsOfType(output(command({"--analytics-show", "--json"})), "event");
        CHECK(status().at("database").at("waiting_events") == events.size());
        std::erase_if(events, [](const json &event) { return event.at("origin") != "app"; });
        return events;
    }
};

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
    const auto events = recorded();
    std::vector<std::string> names;
    std::ranges::transform(events, std::back_inserter(names), [](auto &event) { return event.at("name"); });
    CHECK(names == std::vector<std::string>{"start_capture", "catch_photo", "photo_auto_saved", "catch_photo",
                                            "photo_auto_saved", "stop_capture"});
    const json &caught = events.at(3).at("parameters");
    CHECK(caught.at("totalPhotos") == 4); // those of the run that was not measured are in the store too
    CHECK(caught.at("difference").get<double>() == doctest::Approx(photos[1].at("difference").get<double>()));
    const json state = status();
    CHECK(state.at("debug_mode") == true);
    CHECK(state.at("app_instance_id").get<std::string>().size() == 32);
    CHECK(state.at("database").at("today").at("public_events") == 6);

    std::array<char, 8> mark{};
    const bool isMarked = getxattr(measured.c_str(), "user.xdg.robots.backup", mark.data(), mark.size()) > 0;
    CHECK((isMarked ? std::string(mark.data()) == "false" : errno == ENOTSUP)); // not every file system can
    CHECK(std::ranges::count(output(command({"--analytics-show"})), "    totalPhotos = 4") == 1);
}

TEST_CASE_FIXTURE(RecordingFixture, "a run asks nothing of any network unless the deployer names a host")
{
    const NetworkTrace network(folder / "trace");
    const auto traced = [&](const PropertyList::Dictionary &info, const std::string &limit) {
        deploy(info);
        auto arguments = network.command();
        std::ranges::copy(command({"--camera", "simulated:64x36@30", "--sensitivity", "high", "--arm-after",
                                   "0", "--quiet", "-FIRDebugEnabled", "--duration", limit}),
                          std::back_inserter(arguments));
        return arguments;
    };
    output(traced({}, "2"));
    CHECK(network.callsOutside() == std::vector<std::string>());
    CHECK(std::ranges::any_of(recorded(), [](auto &event) { return event.at("name") == "stop_capture"; }));

    const HttpServer server([](const HttpServer::Request &) { return HttpServer::answer(204, ""); });
    ChildProcess sending(traced({{"MIPEME_ANALYTICS_COLLECTION_HOST", server.url("")}}, "3600"));
    CHECK(server.waitForRequests(1));
    REQUIRE(NetworkTrace::signal(sending, SIGINT));
    CHECK(sending.wait() == 0);
    CHECK_FALSE(network.callsOutside().empty()); // it would have been seen
}

TEST_CASE_FIXTURE(RecordingFixture,
                  "where the record is damaged or another program's, the run goes on and says so")
{
    for (const bool isAnothers : {false, true}) {
        CAPTURE(isAnothers);
        std::filesystem::remove(measured);
        std::optional<OwnerLock> another;
        if (isAnothers)
            another.emplace(*OwnerLock::acquire(measured));
        else
            REQUIRE(replaceFile(measured, Bytes(5000, 'x')));
        CHECK(runProgram(command({"--analytics-status"})) == (isAnothers ? 0 : 1));
        ChildProcess process(watchShow());
        CHECK(objectsOfType(process.readAll(), "photo").size() == 2);
        CHECK(process.wait() == 0);
        const std::string errors = process.errors();
        CAPTURE(errors);
        CHECK(errors.starts_with("<AppMeasurement> "));
        CHECK(std::ranges::count(errors, '\n') <=
              (isAnothers ? 1 : 3)); // what SQLite says, and what comes of it
        CHECK(runProgram(command({"--analytics-status"})) == 0);
        CHECK(exists(measured) != isAnothers);
    }
}
