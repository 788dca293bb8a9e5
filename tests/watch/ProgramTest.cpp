// The whole program, as a person or a script starts it.

#include "platform/base/Files.h"
#include "platform/camera/sky/SimulatedSky.h"
#include "platform/image/Image.h"
#include "tests/watch/WatchFixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>
#include <set>
#include <sstream>

using namespace skyflare;

namespace {

std::string textOf(const std::filesystem::path &path)
{
    const auto bytes = readFile(path);
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

struct CsvRow {
    double seconds = 0;
    double brightness = 0;
    bool triggered = false;
    bool captured = false;
};

std::vector<CsvRow> csvRows(const std::filesystem::path &path)
{
    std::istringstream text(textOf(path));
    std::string line;
    std::getline(text, line);
    REQUIRE(line == "time_s,brightness,difference,triggered,captured");
    std::vector<CsvRow> rows;
    while (std::getline(text, line)) {
        CsvRow row;
        int triggered = -1;
        int captured = -1;
        REQUIRE(std::sscanf(line.c_str(), "%lf,%lf,%*[^,],%d,%d", &row.seconds, &row.brightness, &triggered,
                            &captured) == 4);
        row.triggered = triggered == 1;
        row.captured = captured == 1;
        rows.push_back(row);
    }
    return rows;
}

/// Exported photos by name, without the contact sheet.
std::map<std::string, Bytes> exportedPhotos(const std::filesystem::path &folder)
{
    std::map<std::string, Bytes> photos;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename() != "contact-sheet.png")
            photos[entry.path().filename()] = *readFile(entry.path());
    return photos;
}

} // namespace

TEST_CASE("a film gives the same photos whatever else the machine does")
{
    const WatchFixture fixture;
    // Before the arming at 2 s; a burst; one within the interval of one second; one after it; the last frame.
    const std::string film = fixture.film("show.mp4", 180, "eq(N,30)+eq(N,75)+eq(N,90)+eq(N,120)+eq(N,179)");

    struct Outcome {
        std::vector<std::string> photos;
        std::string csv;
        std::vector<Bytes> pictures;
    };
    const auto watch = [&](const std::string &run) {
        const auto exported = fixture.folder / ("export" + run);
        const auto csv = fixture.folder / ("frames" + run + ".csv");
        ChildProcess process(fixture.command({film, "--json", "--export", exported.string(), "--frames-csv",
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
        CHECK(std::filesystem::exists(exported / "contact-sheet.png"));
        for (const auto &[name, bytes] : exportedPhotos(exported))
            outcome.pictures.push_back(bytes);
        return outcome;
    };

    const Outcome alone = watch("1");
    const std::vector<std::string> burn{"sh", "-c", "while :; do :; done"};
    const ChildProcess load[] = {ChildProcess(burn), ChildProcess(burn), ChildProcess(burn)};
    const Outcome loaded = watch("2");

    REQUIRE(alone.photos.size() == 3);
    CHECK(alone.photos[0].starts_with("2.5 "));
    CHECK(alone.photos[1].starts_with("4.0 "));
    CHECK(alone.photos[2].starts_with("5.966666 "));
    CHECK(alone.photos == loaded.photos);
    CHECK(alone.csv == loaded.csv);
    CHECK(alone.pictures == loaded.pictures);
    CHECK(alone.pictures.size() == 3);
}

TEST_CASE("at High every burst of the simulated sky is caught and nothing else")
{
    const WatchFixture fixture;
    const auto csv = fixture.folder / "frames.csv";
    ChildProcess process(fixture.command({"--camera", "simulated:320x180@30,seed=5", "--sensitivity", "high",
                                          "--frequency", "5", "--arm-after", "0", "--duration", "9", "--json",
                                          "--frames-csv", csv.string()}));
    const auto lines = process.readAll();
    CAPTURE(process.errors());
    REQUIRE(process.wait() == 0);

    const SimulatedSky sky({.width = 320, .height = 180, .framesPerSecond = 30, .seed = 5});
    const auto rows = csvRows(csv);
    REQUIRE(rows.size() > 10);
    const auto bursts = sky.burstTimes(rows.back().seconds + 0.001);
    std::size_t judged = 0;
    std::size_t captured = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const double before = rows[i - 1].seconds + 1e-5; // the table's times are cut to microseconds
        const double now = rows[i].seconds + 1e-5;
        CHECK(rows[i].triggered == rows[i].captured);
        captured += rows[i].captured ? 1 : 0;
        if (now - before > 0.1)
            continue; // a busy machine dropped frames: what it skipped, the sky makes no promise about
        CAPTURE(now);
        const bool isBurst =
            std::ranges::any_of(bursts, [&](double burst) { return before < burst && burst <= now; });
        CHECK(rows[i].captured == isBurst);
        judged += isBurst ? 1 : 0;
    }
    CHECK(judged >= 3); // of 6 or 7
    CHECK(objectsOfType(lines, "photo").size() == captured);
}

TEST_CASE("what is no whole film gives one clear line and status 1")
{
    const WatchFixture fixture;
    const std::string film = fixture.film("whole.mp4", 300, "eq(N,100)");
    const auto half = fixture.folder / "half.mp4";
    std::filesystem::copy_file(film, half);
    std::filesystem::resize_file(half, std::filesystem::file_size(half) / 2);
    const auto sound = fixture.folder / "sound.m4a";
    REQUIRE(runProgram({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=1", sound.string()}) == 0);
    const auto text = fixture.folder / "text.mp4";
    REQUIRE(replaceFile(text, std::vector<std::uint8_t>(5000, 'x')));

    struct Row {
        std::string argument;
        std::string message;
    };
    const Row rows[] = {
        {half.string(), "incomplete"},
        {sound.string(), "no pictures"},
        {text.string(), "text.mp4"},
        {(fixture.folder / "missing.mp4").string(), "missing.mp4"},
    };
    for (const Row &row : rows) {
        CAPTURE(row.argument);
        ChildProcess process(fixture.command({row.argument, "--quiet", "--json"}));
        const auto lines = process.readAll();
        CHECK(process.wait() == 1);
        const std::string errors = process.errors();
        CAPTURE(errors);
        CHECK(errors.find(row.message) != std::string::npos);
        CHECK(std::ranges::count(errors, '\n') == 1);
        CHECK(objectsOfType(lines, "summary").size() == 1);
    }
}

TEST_CASE("a wrong command line says in one line what would be right")
{
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
    };
    const WatchFixture fixture;
    for (const Row &row : rows) {
        CAPTURE(row.message);
        ChildProcess process(fixture.command(row.arguments));
        const auto lines = process.readAll();
        CHECK(process.wait() == row.status);
        const std::string errors = process.errors();
        CAPTURE(errors);
        CHECK(errors.find(row.message) != std::string::npos);
        CHECK(std::ranges::count(errors, '\n') == 1);
    }
    CHECK(runProgram(fixture.command({"--list-cameras"})) == 0);
    CHECK(runProgram(fixture.command({"-APMAnalyticsDebugEnabled", "--version"})) == 0);
}

TEST_CASE("Ctrl-C ends a run in order, and options change no stored setting")
{
    const WatchFixture fixture;
    const auto settings = fixture.folder / "data/config/standard.plist";
    REQUIRE(runProgram(fixture.command({"--camera", "simulated:64x36@30", "--duration", "0.2"})) == 0);
    const std::string before = textOf(settings);
    CHECK_FALSE(before.empty());

    ChildProcess process(fixture.command({"--camera", "simulated:64x36@30", "--json", "--sensitivity",
                                          "extreme", "--frequency", "5", "--arm-after", "0"}));
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

TEST_CASE("on a full disk no photo is reported that is not stored, and the loss is said")
{
    const WatchFixture fixture;
    if (ChildProcess({"unshare", "-rm", "true"}).wait() != 0) {
        MESSAGE("NOT TESTED: this machine does not let us mount a disk of our own (unshare -rm)");
        return;
    }
    const std::string film = fixture.film("busy.mp4", 300, "eq(mod(N,7),3)");
    std::filesystem::create_directory(fixture.folder / "disk");
    const std::string script = R"(
        mount -t tmpfs -o size=300k none "$1"; mkdir "$1/data"
        "$2" --data-dir "$1" "$3" --json --quiet --frequency 5 --sensitivity high && exit 9
        sqlite3 "$1/data/Storage.sqlite" "SELECT '{\"type\":\"stored\"}' FROM PhotoEntity")";
    ChildProcess process({"unshare", "-rm", "sh", "-ec", script, "sh", (fixture.folder / "disk").string(),
                          SKYFLARE_WATCH, film});
    const auto lines = process.readAll();
    CHECK(process.wait() == 0);
    const auto photos = objectsOfType(lines, "photo").size();
    CHECK(photos > 0);
    CHECK(photos == objectsOfType(lines, "stored").size());
    CHECK(objectsOfType(lines, "summary").at(0).at("triggers") > photos);
    CHECK(process.errors().find("photos could not be stored: database or disk is full") != std::string::npos);
}

TEST_CASE("a photo whose line was printed is there, whole, however the program was killed")
{
    const WatchFixture fixture;
    // A flash every 7 frames: the interval of five photos a second has just passed.
    const std::string film = fixture.film("busy.mp4", 900, "eq(mod(N,7),3)");

    std::set<std::string> printed;
    for (int round = 0; round < 8; ++round) {
        ChildProcess process(fixture.command(
            {film, "--json", "--sensitivity", "high", "--frequency", "5", "--arm-after", "0"}));
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
    }

    // Whole: the last chunk of every PNG is there.
    ChildProcess check({"sqlite3", fixture.database().string(),
                        "PRAGMA integrity_check; SELECT uuid FROM PhotoEntity "
                        "WHERE hex(substr(photoData, -12)) = '0000000049454E44AE426082';"});
    const auto rows = check.readAll();
    CHECK(check.wait() == 0);
    REQUIRE_FALSE(rows.empty());
    CHECK(rows.front() == "ok");
    for (const std::string &uuid : printed) {
        CAPTURE(uuid);
        CHECK(std::ranges::find(rows, uuid) != rows.end());
        CHECK(std::ranges::all_of(
            uuid, [](char c) { return c == '-' || std::isdigit(c) || (c >= 'A' && c <= 'F'); }));
    }
    CHECK(printed.size() >= 8 * 5);
}
