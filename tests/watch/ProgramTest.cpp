// The whole program, as a person or a script starts it.

#include "platform/base/Files.h"
#include "platform/camera/sky/SimulatedSky.h"
#include "platform/image/Image.h"
#include "tests/watch/WatchFixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <set>

using namespace skyflare;

namespace {

std::string textOf(const std::filesystem::path &path)
{
    const auto bytes = readFile(path);
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

} // namespace

TEST_CASE_FIXTURE(WatchFixture, "a film gives the same photos whatever else the machine does")
{
    // Before the arming; at its moment, 2 s; one within the interval of one second; one after it; the last
    // frame.
    const std::string show = film("show.mp4", 180, "eq(N,30)+eq(N,60)+eq(N,75)+eq(N,120)+eq(N,179)");

    struct Outcome {
        std::vector<std::string> photos;
        std::string csv;
        std::vector<Bytes> pictures;
    };
    const auto watch = [&](const std::string &run) {
        const auto exported = folder / ("export" + run);
        const auto csv = folder / ("frames" + run + ".csv");
        ChildProcess process(command({show, "--json", "--export", exported.string(), "--frames-csv",
                                      csv.string(), "--sensitivity", "high"}));
        const auto lines = process.readAll();
        CAPTURE(process.errors());
        REQUIRE(process.wait() == 0);

        const auto summary = objectsOfType(lines, "summary").at(0);
        CHECK(summary.at("frames") == 180);
        CHECK(summary.at("dropped") == 0);
        CHECK(summary.at("triggers") == 4);
        CHECK(summary.at("photos") == 3);
        CHECK(summary.at("film_s") == doctest::Approx(6.0));
        CHECK(objectsOfType(lines, "started").at(0).at("width") == 320);

        Outcome outcome{.photos = {}, .csv = textOf(csv), .pictures = {}};
        for (const auto &photo : objectsOfType(lines, "photo"))
            outcome.photos.push_back(photo.at("time_s").dump() + " " + photo.at("difference").dump());
        std::map<std::string, Bytes> files; // by name
        for (const auto &file : std::filesystem::directory_iterator(exported))
            files[file.path().filename()] = *readFile(file.path());
        CHECK(files.erase("contact-sheet.png") == 1);
        for (const auto &[name, bytes] : files)
            outcome.pictures.push_back(bytes);
        return outcome;
    };

    const Outcome alone = watch("1");
    const std::vector<std::string> burn{"sh", "-c", "while :; do :; done"};
    const ChildProcess load[] = {ChildProcess(burn), ChildProcess(burn), ChildProcess(burn)};
    const Outcome loaded = watch("2");

    REQUIRE(alone.photos.size() == 3);
    CHECK(alone.photos[0].starts_with("2.0 "));
    CHECK(alone.photos[1].starts_with("4.0 "));
    CHECK(alone.photos[2].starts_with("5.966666 "));
    CHECK(alone.photos == loaded.photos);
    CHECK(alone.csv == loaded.csv);
    CHECK(alone.pictures == loaded.pictures);
    CHECK(alone.pictures.size() == 3);
}

TEST_CASE_FIXTURE(WatchFixture, "at High every burst of the simulated sky is caught and nothing else")
{
    const auto csv = folder / "frames.csv";
    ChildProcess process(
        command({"--camera", "simulated:320x180@30,seed=5", "--sensitivity", "high", "--frequency", "5",
                 "--arm-after", "0", "--duration", "9", "--json", "--frames-csv", csv.string()}));
    const auto lines = process.readAll();
    CAPTURE(process.errors());
    REQUIRE(process.wait() == 0);

    const SimulatedSky sky({.width = 320, .height = 180, .framesPerSecond = 30, .seed = 5});
    const auto bursts = sky.burstTimes(10);
    std::ifstream rows(csv);
    std::string row;
    std::getline(rows, row);
    CHECK(row == "time_s,brightness,difference,triggered,captured");
    std::size_t judged = 0;
    std::size_t photos = 0;
    for (double before = -1; std::getline(rows, row);) {
        double now = 0;
        int triggered = -1;
        int captured = -1;
        REQUIRE(std::sscanf(row.c_str(), "%lf,%*[^,],%*[^,],%d,%d", &now, &triggered, &captured) == 3);
        CAPTURE(now);
        now += 1e-5; // the table's times are cut to microseconds
        CHECK(triggered == captured);
        photos += captured == 1 ? 1 : 0;
        const bool isBurst =
            std::ranges::any_of(bursts, [&](double burst) { return before < burst && burst <= now; });
        // What a busy machine skipped, the sky makes no promise about.
        if (now - before < 0.1) {
            CHECK((captured == 1) == isBurst);
            judged += isBurst ? 1 : 0;
        }
        before = now;
    }
    CHECK(judged >= 3); // of 6 or 7
    CHECK(objectsOfType(lines, "photo").size() == photos);
}

TEST_CASE_FIXTURE(WatchFixture, "what cannot be watched is said in one line, with what would be right")
{
    const std::string half = film("half.mp4", 300, "eq(N,100)");
    std::filesystem::resize_file(half, std::filesystem::file_size(half) / 2);
    struct Row {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    };
    const Row rows[] = {
        {{"--sensitivity", "enormous"}, 2, "very-high"},
        {{"--frequency", "6"}, 2, "1 to 5"},
        {{"--duration", "soon"}, 2, "seconds"},
        {{"--photos", "0"}, 2, "from 1"},
        {{"--export"}, 2, "needs a value"},
        {{"--frobnicate"}, 2, "--help"},
        {{"a.mp4", "b.mp4"}, 2, "one FILE"},
        {{"a.mp4", "--camera", "simulated"}, 2, "not both"},
        {{"--camera", "Nobody's camera"}, 1, "--list-cameras"},
        {{"--camera", "simulated:0x0"}, 1, "simulated"},
        {{"missing.mp4"}, 1, "missing.mp4"},
        {{half, "--quiet", "--json"}, 1, "incomplete"},
    };
    for (const Row &row : rows) {
        CAPTURE(row.message);
        ChildProcess process(command(row.arguments));
        const auto lines = process.readAll();
        CHECK(process.wait() == row.status);
        const std::string errors = process.errors();
        CAPTURE(errors);
        CHECK(errors.find(row.message) != std::string::npos);
        CHECK(std::ranges::count(errors, '\n') == 1);
    }
    CHECK(runProgram(command({"--list-cameras"})) == 0);
    CHECK(runProgram(command({"-APMAnalyticsDebugEnabled", "--version"})) == 0);
}

TEST_CASE_FIXTURE(WatchFixture, "Ctrl-C ends a run in order, and options change no stored setting")
{
    const auto settings = folder / "data/config/standard.plist";
    REQUIRE(runProgram(command({"--camera", "simulated:64x36@30", "--duration", "0.2"})) == 0);
    const std::string before = textOf(settings);
    CHECK_FALSE(before.empty());

    ChildProcess process(command({"--camera", "simulated:64x36@30", "--json", "--sensitivity", "extreme",
                                  "--frequency", "5", "--arm-after", "0"}));
    std::vector<std::string> lines;
    while (objectsOfType(lines, "photo").empty()) {
        const auto line = process.readLine();
        REQUIRE(line);
        lines.push_back(*line);
    }
    process.signal(SIGINT);
    const auto rest = process.readAll();
    CHECK(process.wait() == 0);
    CHECK(objectsOfType(rest, "summary").size() == 1);
    CHECK(textOf(settings) == before);
    CHECK(before.find("alreadyLaunched") == std::string::npos);
}

TEST_CASE_FIXTURE(WatchFixture,
                  "on a full disk no photo is reported that is not stored, and the loss is said")
{
    if (ChildProcess({"unshare", "-rm", "true"}).wait() != 0) {
        MESSAGE("NOT TESTED: this machine does not let us mount a disk of our own (unshare -rm)");
        return;
    }
    const std::string busy = film("busy.mp4", 300, "eq(mod(N,7),3)");
    std::filesystem::create_directory(folder / "disk");
    const std::string script = R"(
        mount -t tmpfs -o size=800k none "$1"; mkdir "$1/data"
        "$2" --data-dir "$1" "$3" --json --quiet --frequency 5 --sensitivity high && exit 9
        sqlite3 "$1/data/Storage.sqlite" "SELECT '{\"type\":\"stored\"}' FROM PhotoEntity")";
    ChildProcess process(
        {"unshare", "-rm", "sh", "-ec", script, "sh", (folder / "disk").string(), SKYFLARE_WATCH, busy});
    const auto lines = process.readAll();
    CHECK(process.wait() == 0);
    const auto photos = objectsOfType(lines, "photo").size();
    CHECK(photos > 0);
    CHECK(photos == objectsOfType(lines, "stored").size());
    CHECK(objectsOfType(lines, "summary").at(0).at("triggers") > photos);
    CHECK(process.errors().find("photos could not be stored: database or disk is full") != std::string::npos);
}

TEST_CASE_FIXTURE(WatchFixture,
                  "a photo whose line was printed is there, whole, however the program was killed")
{
    // A flash every 7 frames: the interval of five photos a second has just passed.
    const std::string busy = film("busy.mp4", 900, "eq(mod(N,7),3)");

    std::set<std::string> printed;
    for (int round = 0; round < 8; ++round) {
        ChildProcess process(
            command({busy, "--json", "--sensitivity", "high", "--frequency", "5", "--arm-after", "0"}));
        // Killed at the line of a photo, each round at another one, in the middle of the next photo's work.
        for (int photos = 0; photos < 5 + 3 * round;) {
            const auto line = process.readLine();
            REQUIRE(line);
            for (const auto &photo : objectsOfType({*line}, "photo")) {
                printed.insert(photo.at("uuid"));
                ++photos;
            }
        }
        process.signal(SIGKILL);
        for (const std::string &line : process.readAll()) // what was printed before the signal came
            if (line.ends_with('}'))
                for (const auto &photo : objectsOfType({line}, "photo"))
                    printed.insert(photo.at("uuid"));
        process.wait();
        CHECK(runProgram(command({"--analytics-status"})) == 0); // the record balances as well
    }

    // Whole: the last chunk of every PNG is there.
    ChildProcess check({"sqlite3", database().string(),
                        "PRAGMA integrity_check; SELECT uuid FROM PhotoEntity "
                        "WHERE hex(substr(photoData, -12)) = '0000000049454E44AE426082';"});
    const auto rows = check.readAll();
    CHECK(check.wait() == 0);
    REQUIRE_FALSE(rows.empty());
    CHECK(rows.front() == "ok");
    for (const std::string &uuid : printed) {
        CAPTURE(uuid);
        CHECK(std::ranges::find(rows, uuid) != rows.end());
    }
    CHECK(printed.size() >= 8 * 5);
}
