// The whole program, as a person or a script starts it.

#include "platform/base/Files.h"
#include "platform/camera/sky/SimulatedSky.h"
#include "platform/image/Image.h"
#include "tests/watch/WatchFixture.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
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

    const auto watch = [&](const std::string &run) {
        const auto exported = folder / ("export" + run);
        const auto csv = folder / ("frames" + run + ".csv");
        const auto lines = output(command({show, "--json", "--quiet", "--export", exported.string(),
                                           "--frames-csv", csv.string(), "--sensitivity", "high"}));
        const auto summary = objectsOfType(lines, "summary").at(0);
        CHECK(summary.at("frames") == 180);
        CHECK(summary.at("dropped") == 0);
        CHECK(summary.at("triggers") == 4);
        CHECK(summary.at("photos") == 3);
        CHECK(summary.at("film_s") == doctest::Approx(6.0));

        std::vector<std::string> outcome;
        for (const auto &photo : objectsOfType(lines, "photo"))
            outcome.push_back(photo.at("time_s").dump() + " " + photo.at("difference").dump());
        outcome.push_back(textOf(csv));
        CHECK(std::filesystem::remove(exported / "contact-sheet.png"));
        for (const auto &picture : std::filesystem::directory_iterator(exported))
            outcome.push_back(textOf(picture.path()));
        std::ranges::sort(outcome);
        return outcome;
    };

    const auto alone = watch("1");
    const std::vector<std::string> burn{"sh", "-c", "while :; do :; done"};
    const ChildProcess load[] = {ChildProcess(burn), ChildProcess(burn), ChildProcess(burn)};
    const auto loaded = watch("2");

    REQUIRE(alone.size() == 7);
    CHECK(alone[0].starts_with("2.0 "));
    CHECK(alone[1].starts_with("4.0 "));
    CHECK(alone[2].starts_with("5.966666 "));
    CHECK((alone == loaded)); // no output of whole pictures
}

TEST_CASE_FIXTURE(
    WatchFixture,
    "at High every burst of the simulated sky is caught and nothing else, and no setting changes")
{
    const auto settings = folder / "data/config/standard.plist";
    output(command({"--camera", "simulated:64x36@30", "--duration", "0.2", "--quiet"}));
    const std::string before = textOf(settings);
    CHECK(before.find("frequency") != std::string::npos);
    CHECK(before.find("alreadyLaunched") == std::string::npos);

    const auto csv = folder / "frames.csv";
    output(command({"--camera", "simulated:320x180@30,seed=5", "--sensitivity", "high", "--frequency", "5",
                    "--arm-after", "0", "--duration", "9", "--quiet", "--frames-csv", csv.string()}));

    const SimulatedSky sky({.width = 320, .height = 180, .framesPerSecond = 30, .seed = 5});
    const auto bursts = sky.burstTimes(10);
    std::ifstream rows(csv);
    std::string row;
    std::getline(rows, row);
    CHECK(row == "time_s,brightness,difference,triggered,captured");
    std::size_t judged = 0;
    for (double earlier = -1; std::getline(rows, row);) {
        double now = 0;
        int triggered = -1;
        int captured = -1;
        REQUIRE(std::sscanf(row.c_str(), "%lf,%*[^,],%*[^,],%d,%d", &now, &triggered, &captured) == 3);
        CAPTURE(now);
        now += 1e-5; // the table's times are cut to microseconds
        CHECK(triggered == captured);
        const bool isBurst =
            std::ranges::any_of(bursts, [&](double burst) { return earlier < burst && burst <= now; });
        // What a busy machine skipped, the sky makes no promise about.
        if (now - earlier < 0.1) {
            CHECK((captured == 1) == isBurst);
            judged += isBurst ? 1 : 0;
        }
        earlier = now;
    }
    CHECK(judged >= 3);                // of 6 or 7
    CHECK(textOf(settings) == before); // options hold for their run
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
}

TEST_CASE_FIXTURE(
    WatchFixture,
    "where a disk gets full the run ends before a photo is lost, and says so; on a full one none begins")
{
    if (ChildProcess({"unshare", "-rm", "true"}).wait() != 0) {
        MESSAGE("NOT TESTED: this machine does not let us mount a disk of our own (unshare -rm)");
        return;
    }
    const std::string busy = film("busy.mp4", 300, "eq(mod(N,7),3)");
    std::filesystem::create_directory(folder / "disk");
    const std::string script = R"(
        mount -t tmpfs -o size=4m none "$1"; mkdir "$1/data"
        "$2" --data-dir "$1" "$3" --json --quiet --frequency 5 --sensitivity high && exit 9
        sqlite3 "$1/data/Storage.sqlite" "SELECT '{\"type\":\"stored\"}' FROM PhotoEntity"
        head -c 4m /dev/zero > "$1/filler" && exit 9
        "$2" --data-dir "$1" "$3" --json --quiet && exit 9)";
    ChildProcess process(
        {"unshare", "-rm", "sh", "-ec", script, "sh", (folder / "disk").string(), program, busy});
    const auto lines = process.readAll();
    CHECK(process.wait() == 1); // of the second run
    CHECK_FALSE(objectsOfType(lines, "photo").empty());
    CHECK(objectsOfType(lines, "photo").size() == objectsOfType(lines, "stored").size());
    CHECK(objectsOfType(lines, "summary").size() == 1);
    const std::string errors = process.errors();
    CAPTURE(errors);
    CHECK(errors.find("there is room for fewer than 20 more photos") != std::string::npos);
    CHECK(errors.find("there is no room") != errors.rfind("there is no room")); // each run says so
    CHECK(errors.find("photos could not be stored") == std::string::npos);
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
        std::vector<std::string> lines;
        for (int photo = 0; photo < 5 + 3 * round; ++photo)
            lines.push_back(readUntil(process, "photo").back());
        process.signal(SIGKILL);
        std::ranges::copy_if(process.readAll(), std::back_inserter(lines), // printed before the signal came
                             [](const std::string &line) { return line.ends_with('}'); });
        for (const auto &photo : objectsOfType(lines, "photo"))
            printed.insert(photo.at("uuid"));
        process.wait();
        CHECK(runProgram(command({"--analytics-status"})) == 0); // the record balances as well
    }

    const auto stored = storedPhotos();
    for (const std::string &uuid : printed) {
        CAPTURE(uuid);
        CHECK(std::ranges::count(stored, uuid + "|00000140000000B4") == 1);
    }
    CHECK(printed.size() >= 8 * 5);
    CHECK(output({"sqlite3", folder / "data/data/Storage.sqlite", "PRAGMA integrity_check"}).at(0) == "ok");
}
