// The whole program on a camera of PipeWire's that comes, goes and dies.

#include "tests/fakes/PrivatePipeWire.h"
#include "tests/watch/WatchFixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <csignal>
#include <functional>

using namespace skyflare;

namespace {

using Ending = std::function<void(PrivatePipeWire &, ChildProcess &camera, ChildProcess &program)>;

/// What is left of a program that was started, watched until its first photo, and then met with `ending`.
struct Outcome {
    std::vector<std::string> lines;
    std::string errors;
    int status = 0;
    std::vector<std::string> storedSizes; ///< width and height of each stored photo
};

Outcome watchUntil(const Ending &ending)
{
    PrivatePipeWire pipeWire;
    const auto camera = pipeWire.camera("Night Watch", {.format = "I420", .width = 642, .height = 361});
    const WatchFixture fixture;
    ChildProcess program(fixture.command(
        {"--camera", "night watch", "--json", "--quiet", "--arm-after", "0", "--sensitivity", "high"}));
    Outcome outcome;
    while (objectsOfType(outcome.lines, "photo").empty()) {
        const auto line = program.readLine();
        REQUIRE_MESSAGE(line, program.errors());
        outcome.lines.push_back(*line);
    }
    ending(pipeWire, *camera, program);
    std::ranges::copy(program.readAll(), std::back_inserter(outcome.lines));
    outcome.status = program.wait();
    outcome.errors = program.errors();

    // Of a PNG: width and height as the header has them, and the end.
    ChildProcess check({"sqlite3", fixture.database().string(),
                        "SELECT hex(substr(photoData, 17, 8)) FROM PhotoEntity "
                        "WHERE hex(substr(photoData, -12)) = '0000000049454E44AE426082'"});
    outcome.storedSizes = check.readAll();
    CHECK(check.wait() == 0);
    return outcome;
}

} // namespace

TEST_CASE("what was caught is kept and the program ends, however the watching ends")
{
    struct Row {
        const char *name;
        Ending ending;
        int status;
        bool isLost;
    };
    const Row rows[] = {
        {"Ctrl-C", [](auto &, auto &, ChildProcess &program) { program.signal(SIGINT); }, 0, false},
        {"camera killed", [](auto &, ChildProcess &camera, auto &) { camera.kill(); }, 1, true},
        {"PipeWire killed", [](PrivatePipeWire &pipeWire, auto &, auto &) { pipeWire.killDaemon(); }, 1,
         true},
        {"camera hangs, then PipeWire too",
         [](PrivatePipeWire &pipeWire, ChildProcess &camera, auto &) {
             camera.signal(SIGSTOP);
             pipeWire.stopDaemon();
         },
         1, true},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        const Outcome outcome = watchUntil(row.ending);
        CAPTURE(outcome.errors);
        CHECK(outcome.status == row.status);
        const auto started = objectsOfType(outcome.lines, "started").at(0);
        CHECK(started.at("camera") == "Night Watch");
        CHECK(started.at("height") == 361);
        CHECK(objectsOfType(outcome.lines, "lost").size() == (row.isLost ? 1 : 0));
        const auto photos = objectsOfType(outcome.lines, "photo");
        CHECK(photos[0].at("difference").get<double>() == doctest::Approx(0.87).epsilon(0.01));
        CHECK(objectsOfType(outcome.lines, "summary").at(0).at("photos") == photos.size());
        CHECK(outcome.storedSizes == std::vector<std::string>(photos.size(), "0000028200000169"));
    }
}

TEST_CASE("--list-cameras shows a camera of PipeWire's with its size and rate")
{
    const PrivatePipeWire pipeWire;
    const auto camera = pipeWire.camera("Rear Window", {.width = 640, .height = 360, .rate = 24});
    ChildProcess program({SKYFLARE_WATCH, "--list-cameras", "--json"});
    const auto cameras = objectsOfType(program.readAll(), "camera");
    CHECK(program.wait() == 0);
    const auto found =
        std::ranges::find(cameras, "Rear Window", [](const auto &each) { return each.at("camera"); });
    REQUIRE(found != cameras.end());
    CHECK(found->at("position") == "back");
    CHECK(found->at("width") == 640);
    CHECK(found->at("fps") == 24);
}
