#include "app/App.h"

#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

using Strings = std::vector<std::string>;

/// Everything an App needs, and what happened to it in order.
struct AppFixture {
    TemporaryFolder folder;
    RecordingConsole console;
    NotificationCenter center;
    UserDefaults defaults{folder / "settings.plist", console};
    int posts = 0;
    NotificationCenter::Observation observation = center.addObserver("SettingsChanged", [this] { ++posts; });

    App::Services services() { return {defaults, center, console}; }
};

} // namespace

TEST_CASE_FIXTURE(AppFixture, "a fresh install starts with the defaults, stored, announced and printed")
{
    const App app(services());
    CHECK(app.firstLaunch());
    CHECK(posts == 5);
    CHECK(console.lines() == Strings{"manualFocus: false", "autoSave: false", "savedPhoto: 0",
                                     "sensivity: 0.1", "frequency: 1.0"});
    const UserDefaults stored(folder / "settings.plist", console);
    CHECK_FALSE(stored.hasObjectForKey("alreadyLaunched"));
    for (const char *key : {"manualFocus", "autoSave", "savedPhoto"})
        CHECK(stored.hasObjectForKey(key));
    CHECK(stored.floatForKey("sensivity") == 0.1F);
    CHECK(stored.doubleForKey("frequency") == 1.0);
}

TEST_CASE_FIXTURE(AppFixture, "an app that has been launched keeps its settings until the mark is removed")
{
    defaults.setObject(std::string("yes"), "alreadyLaunched");
    defaults.setObject(std::string("1"), "manualFocus");
    defaults.setInteger(12, "savedPhoto");
    defaults.setFloat(0.25F, "sensivity");
    const App app(services());
    CHECK_FALSE(app.firstLaunch());
    CHECK(app.manualFocus());
    CHECK_FALSE(app.autoSave());
    CHECK(app.savedPhoto() == 12);
    CHECK(app.sensivity() == 0.25F);
    CHECK(app.frequency() == 0.0);
    CHECK(posts == 0);
    CHECK(console.lines().empty());

    defaults.removeObjectForKey("alreadyLaunched");
    const App next(services());
    CHECK(next.firstLaunch());
    CHECK(next.savedPhoto() == 0);
    CHECK(next.sensivity() == 0.1F);
}

TEST_CASE_FIXTURE(AppFixture, "a setter assigns, stores, announces and then prints")
{
    defaults.setObject(std::string("yes"), "alreadyLaunched");
    App app(services());
    Strings seen; // by an observer: the field, the stored value, the lines printed before
    const auto watching = center.addObserver("SettingsChanged", [&] {
        seen.push_back(std::to_string(app.autoSave()) + std::to_string(defaults.boolForKey("autoSave")) +
                       std::to_string(console.lines().size()));
    });
    app.setAutoSave(true);
    CHECK(seen == Strings{"110"});
    CHECK(console.lines() == Strings{"autoSave: true"});

    app.setManualFocus(true);
    app.setSensivity(0.005F);
    app.setFrequency(1.0 / 3);
    CHECK(posts == 4);
    app.setSavedPhoto(-1);
    app.setFirstLaunch(true);
    CHECK(posts == 4);
    CHECK(console.lines() == Strings{"autoSave: true", "manualFocus: true", "sensivity: 0.005",
                                     "frequency: 0.3333333333333333", "savedPhoto: -1"});
    const App reread(services());
    CHECK(reread.manualFocus());
    CHECK(reread.savedPhoto() == -1);
    CHECK(reread.sensivity() == 0.005F);
    CHECK(reread.frequency() == 1.0 / 3);
}
