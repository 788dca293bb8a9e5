#include "platform/base/UserDefaults.h"

#include "platform/base/Files.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>
#include <sys/resource.h>

#include <csignal>
#include <limits>

using namespace skyflare;

namespace {

namespace fs = std::filesystem;

long filesIn(const fs::path &folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

struct DefaultsFixture {
    TemporaryFolder folder;
    RecordingConsole console;
    fs::path file = folder / "settings.plist";
};

} // namespace

TEST_CASE_FIXTURE(DefaultsFixture, "a typed getter converts what it finds")
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    struct Row {
        PropertyList stored;
        bool asBool;
        std::int64_t asInteger;
        double asFloat; ///< widened
        double asDouble;
        std::optional<std::string> asString;
    };
    const Row rows[] = {
        {true, true, 1, 1, 1, "1"},
        {false, false, 0, 0, 0, "0"},
        {std::int64_t{-7}, true, -7, -7, -7, "-7"},
        {0.25, true, 0, 0.25, 0.25, "0.25"},
        {-2.9, true, -2, static_cast<double>(-2.9F), -2.9, "-2.9"},
        {1e300, true, most, infinite, 1e300, "1e+300"},
        {std::string("1"), true, 1, 1, 1, "1"},
        {std::string("yes"), true, 0, 0, 0, "yes"},
        {std::string(" +0t"), true, 0, 0, 0, " +0t"},
        {std::string("no"), false, 0, 0, 0, "no"},
        {std::string("0.5"), false, 0, 0.5, 0.5, "0.5"},
        {std::string("\t-12.75e1 m"), true, -12, -127.5, -127.5, "\t-12.75e1 m"},
        {std::string("-99999999999999999999"), true, least, static_cast<double>(-1e20F), -1e20,
         "-99999999999999999999"},
        {std::string("inf"), false, 0, 0, 0, "inf"},
        {std::string(), false, 0, 0, 0, ""},
        {Bytes{1}, false, 0, 0, 0, std::nullopt},
        {PropertyList::Array{true}, false, 0, 0, 0, std::nullopt},
    };
    UserDefaults defaults(file, console);
    for (const Row &row : rows) {
        CAPTURE(&row - &rows[0]);
        defaults.setObject(row.stored, "key");
        CHECK(defaults.boolForKey("key") == row.asBool);
        CHECK(defaults.integerForKey("key") == row.asInteger);
        CHECK(static_cast<double>(defaults.floatForKey("key")) == row.asFloat);
        CHECK(defaults.doubleForKey("key") == row.asDouble);
        CHECK(defaults.stringForKey("key") == row.asString);
    }
    defaults.removeObjectForKey("key");
    CHECK_FALSE(defaults.hasObjectForKey("key"));
    CHECK_FALSE(defaults.stringForKey("key").has_value());
    CHECK(defaults.doubleForKey("key") == 0);
}

TEST_CASE_FIXTURE(DefaultsFixture, "a damaged settings file is kept aside, reported and replaced")
{
    Bytes cutShort = PropertyList(PropertyList::Dictionary{{"autoSave", true}}).serialize();
    cutShort.resize(cutShort.size() - 5);
    const Bytes otherType = PropertyList(PropertyList::Array{true}).serialize();

    for (const Bytes &damaged : {cutShort, otherType, Bytes{}}) {
        REQUIRE(replaceFile(file, damaged));
        UserDefaults defaults(file, console);
        CHECK_FALSE(defaults.hasObjectForKey("autoSave"));
        defaults.setInteger(5, "savedPhoto");
        CHECK(UserDefaults(file, console).integerForKey("savedPhoto") == 5);
    }
    CHECK(*readFile(folder / "settings.plist.damaged") == cutShort);
    CHECK(*readFile(folder / "settings.plist.damaged.2") == otherType);
    CHECK(readFile(folder / "settings.plist.damaged.3")->empty());
    REQUIRE(console.reports().size() == 3);
    CHECK(console.reports()[1] == "settings: " + file.string() +
                                      " is damaged (not a dictionary); kept aside as " + file.string() +
                                      ".damaged.2");
}

TEST_CASE_FIXTURE(DefaultsFixture, "settings that cannot be read or written hold, and are reported once")
{
    folder.write("file", "in the way");
    fs::create_symlink("settings.plist", file); // leads to itself
    for (const fs::path &place : {folder / "file/settings.plist", file}) {
        console.clear();
        UserDefaults defaults(place, console);
        defaults.setInteger(3, "savedPhoto");
        defaults.setInteger(4, "savedPhoto");
        CHECK(defaults.integerForKey("savedPhoto") == 4);
        REQUIRE(console.reports().size() == 1);
        CHECK(console.reports()[0].find(folder.path().string()) != std::string::npos);
    }
    CHECK(fs::is_symlink(file)); // not written over
}

TEST_CASE("a file that cannot be replaced stays as it was")
{
    const TemporaryFolder folder;
    folder.write("file", "old");
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{1000, usual.rlim_max}; // what a full disk does, too
    setrlimit(RLIMIT_FSIZE, &full);
    const auto replaced = replaceFile(folder / "file", Bytes(5000));
    setrlimit(RLIMIT_FSIZE, &usual);
    REQUIRE_FALSE(replaced);
    CHECK(replaced.error().code == EFBIG);
    CHECK(*readFile(folder / "file") == Bytes{'o', 'l', 'd'});
    CHECK(filesIn(folder.path()) == 1);

    fs::create_directories(folder / "folder/in it");
    CHECK_FALSE(replaceFile(folder / "folder", Bytes{1}));
    CHECK(filesIn(folder.path()) == 2);
    CHECK(readFile(folder / "folder").error().message.starts_with("cannot read " + folder.path().string()));
}
