// The whole program on a camera of PipeWire's that comes, goes and dies.

#include "tests/fakes/PrivatePipeWire.h"
#include "tests/watch/WatchFixture.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <iterator>

using namespace skyflare;

TEST_CASE("a camera of PipeWire's is listed and watched; what was caught is kept, however the watching ends")
{
    struct Row {
        const char *name;
        std::function<void(PrivatePipeWire &, ChildProcess &camera, ChildProcess &program)> end;
        int status; ///< 1: the camera is lost
    };
    const Row rows[] = {
        {"Ctrl-C", [](auto &, auto &, ChildProcess &program) { program.signal(SIGINT); }, 0},
        {"camera killed", [](auto &, ChildProcess &camera, auto &) { camera.kill(); }, 1},
        {"PipeWire killed", [](PrivatePipeWire &pipeWire, auto &, auto &) { pipeWire.killDaemon(); }, 1},
        {"camera hangs, then PipeWire too",
         [](PrivatePipeWire &pipeWire, ChildProcess &camera, auto &) {
             camera.signal(SIGSTOP);
             pipeWire.stopDaemon();
         },
         1},
    };
    for (const Row &row : rows) {
        CAPTURE(row.name);
        PrivatePipeWire pipeWire;
        const auto camera = pipeWire.camera("Rear Window", {.format = "I420", .width = 642, .height = 361});
        const auto cameras =
            objectsOfType(WatchFixture::output({SKYFLARE_WATCH, "--list-cameras", "--json"}), "camera");
        const auto found =
            std::ranges::find(cameras, "Rear Window", [](const auto &each) { return each.at("camera"); });
        REQUIRE(found != cameras.end());
        CHECK(found->at("position") == "back");
        CHECK(found->at("width") == 642);
        CHECK(found->at("fps") == 30);

        const WatchFixture fixture;
        ChildProcess program(fixture.command(
            {"--camera", "rear window", "--json", "--quiet", "--arm-after", "0", "--sensitivity", "high"}));
        auto lines = readUntil(program, "photo");
        row.end(pipeWire, *camera, program);
        std::ranges::copy(program.readAll(), std::back_inserter(lines));
        CHECK(program.wait() == row.status);
        CAPTURE(program.errors());

        const auto started = objectsOfType(lines, "started").at(0);
        CHECK(started.at("camera") == "Rear Window");
        CHECK(started.at("height") == 361);
        CHECK(objectsOfType(lines, "lost").size() == static_cast<std::size_t>(row.status));
        const auto photos = objectsOfType(lines, "photo");
        CHECK(photos[0].at("difference").get<double>() == doctest::Approx(0.87).epsilon(0.01));
        CHECK(objectsOfType(lines, "summary").at(0).at("photos") == photos.size());
        const auto stored = fixture.storedPhotos();
        CHECK(stored.size() == photos.size());
        CHECK(std::ranges::all_of(stored, [](auto &photo) { return photo.ends_with("|0000028200000169"); }));
    }
}
