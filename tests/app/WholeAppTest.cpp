// The whole app in its window, as somebody uses it from the first launch on.

#include "tests/app/AppFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>

using namespace skyflare;

namespace {

void learn(DrivenApp &app)
{
    app.see("Welcome to Skyflare!");
    app.seeFocus("onboarding");
    app.click("onboarding");
    app.see("How big a flash takes a photo.*");
    app.press("Space");
    app.see("How many photos Skyflare may take*");
    app.readUntil("onboarding", "Next");
    app.press("Return");
    app.see("Main Button");
    app.readUntil("onboarding", "Done");
    app.click("onboarding");
    app.miss("onboarding");
    app.seeFocus("mainButton");
}

void watchTheShow(DrivenApp &app)
{
    app.see("simulatedCamera");
    app.miss("lastPhotoButton");
    app.readUntil("statusText", "Ready to capture fireworks");
    AppFixture::start(app);
    app.miss("settingsButton");
    app.seeChange("preview");
    app.readUntil("lightPower", "Light Power 0\\.\\d\\d");
    app.readUntil("lastPhotoButton", "All Photos: ([3-9]|\\d\\d)");
    app.readUntil("lastDifference", "Last Rise 0\\.\\d\\d");
    app.press("Space");
    app.readUntil("mainButton", "Start");
    app.readUntil("statusText", "Ready to capture fireworks\\.\\.\\.");
}

void lookAtTheNewest(DrivenApp &app, std::int64_t photos)
{
    app.click("lastPhotoButton");
    app.miss("mainButton"); // covered: the gallery has come
    app.readUntil("photoCountLabel", "\\(" + std::to_string(photos) + "\\)");
    const std::int64_t shown = std::min<std::int64_t>(20, photos);
    app.see("PhotoCell#" + std::to_string(shown));
    app.miss("PhotoCell#" + std::to_string(shown + 1));
    app.press("Return");
    app.see("imageContainer");
    app.miss("PhotoCell");
}

void deleteItAndThenAll(DrivenApp &app, std::int64_t photos)
{
    app.press("Delete");
    app.see("Are you sure you want to delete this photo?");
    app.click("Delete");
    app.miss("imageContainer");
    app.readUntil("photoCountLabel", "\\(" + std::to_string(photos - 1) + "\\)");
    app.click("Delete All");
    app.click("Yes, Delete All");
    app.readUntil("photoCountLabel", "\\(0\\)");
    app.miss("PhotoCell");
    app.miss("Delete All");
    app.press("Escape");
    app.miss("photoCountLabel");
    app.see("mainButton");
    app.miss("lastPhotoButton");
}

/// When its photo was taken.
std::chrono::milliseconds dateOf(const std::filesystem::path &file)
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(
        file_clock::to_sys(std::filesystem::last_write_time(file)).time_since_epoch());
}

/// What the engine has recorded by itself. @return whether it has come to the last screen
bool isRecorded(const std::filesystem::path &folder)
{
    ChildProcess show({SKYFLARE_WATCH, "--data-dir", folder.string(), "--analytics-show", "--json"});
    std::string names;
    std::string screens;
    for (const std::string &line : show.readAll()) {
        const auto event = nlohmann::json::parse(line);
        if (event.at("origin") == "auto")
            names += event.at("name").get<std::string>() + ' ';
        if (event.at("name") == "_vs")
            screens += event.at("parameters").at("_sc").get<std::string>() + ' ';
    }
    CHECK(show.wait() == 0);
    CAPTURE(names);
    CHECK(names.starts_with("_f _s ")); // on a slow start an engagement comes before the first screen
    CHECK(names.find("_s ", names.find("_s ") + 1) == names.npos); // two launches one after the other
    CHECK(screens.starts_with("MainViewController "));
    return screens.ends_with(" PhotoListViewController PhotoDetailViewController PhotoListViewController "
                             "MainViewController ");
}

} // namespace

TEST_CASE_FIXTURE(AppFixture, "the first evening: explained, chosen, three bursts caught; and their photos")
{
    {
        DrivenApp app(setup());
        learn(app);
        CHECK(app.read("sensivityButton") == "Sensivity: Medium");
        CHECK(app.read("frequencyButton") == "Capture Frequency: 1 photo");
        chooseHighAndFivePhotos(app);
        watchTheShow(app);
        end(app);
        CHECK(app.count(caughtLine) >= 3);
        CHECK(storedPhotos() == static_cast<std::int64_t>(app.count(caughtLine)));
        CHECK(app.count("Logged event: start_capture ") == 1);
        CHECK(app.count("Logged event: stop_capture ") == 1);
    }
    const std::int64_t caught = storedPhotos();
    DrivenApp again(setup());
    again.readUntil("lastPhotoButton", "All Photos: " + std::to_string(caught));
    again.miss("onboarding");
    CHECK(again.read("sensivityButton") == "Sensivity: High");
    CHECK(again.read("frequencyButton") == "Capture Frequency: 5 photos");
    lookAtTheNewest(again, caught);
    again.click("Save to Photos");
    again.see("Saved!");
    REQUIRE(savedFiles().size() == 1);
    const char *const newest = "SELECT CAST(round(1000 * max(createdDate)) AS INTEGER) FROM PhotoEntity";
    CHECK(dateOf(savedFiles().front()).count() == database()->number(newest).value());
    deleteItAndThenAll(again, caught);
    CHECK(storedPhotos() == 0);
    while (!isRecorded(folder.path()))
        continue;
    end(again);
}

TEST_CASE_FIXTURE(AppFixture, "what is switched in the settings, in any language, holds after a restart too")
{
    AppSetup japanese = setup();
    japanese.environment = {"LANGUAGE=ja"};
    {
        DrivenApp app(japanese);
        passOnboarding(app);
        app.press("Ctrl+,");
        app.readUntil("アプリの言語", "アプリの言語: 日本語");
        for (const char *const name : {"switch0", "switch1"}) {
            app.readUntil(name, ".* \\(off\\): .*");
            app.click(name);
            app.readUntil(name, ".* \\(on\\): .*");
        }
        end(app);
    }
    DrivenApp app(setup());
    app.press("Ctrl+,");
    app.readUntil("App Language", "App Language: English");
    app.readUntil("switch0", "Auto Save \\(on\\): .*");
    app.readUntil("switch1", "Manual Focus \\(on\\): .*");
    app.press("Escape");
    start(app);
    const char *const saved = "Fotoğraf başarıyla galeriye kaydedildi.";
    app.waitForLine(saved);
    end(app); // in the middle of a run
    CHECK(app.count("Logged event: stop_capture ") == 1);
    CHECK(savedFiles().size() == app.count(caughtLine));
    CHECK(static_cast<std::int64_t>(savedFiles().size()) == storedPhotos());
}
