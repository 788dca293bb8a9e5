// The whole app in its window, as somebody uses it from the first launch on.

#include "tests/app/AppFixture.h"

using namespace skyflare;

TEST_CASE_FIXTURE(AppFixture, "the first evening: explained, chosen, three bursts caught, all of it kept")
{
    std::size_t caught = 0;
    {
        DrivenApp app(setup());
        app.see("Welcome to Skyflare!");
        CHECK(app.focus() == "onboarding");
        app.click("onboarding");
        app.see("How big a flash takes a photo.*");
        app.press("Space");
        app.see("How many photos Skyflare may take*");
        CHECK(app.read("onboarding") == "Next");
        app.press("Return");
        app.see("Main Button");
        CHECK(app.read("onboarding") == "Done");
        app.click("onboarding");
        app.miss("onboarding");
        CHECK(app.focus() == "mainButton");

        CHECK(app.read("sensivityButton") == "Sensivity: Medium");
        CHECK(app.read("frequencyButton") == "Capture Frequency: 1 photo");
        chooseHighAndFivePhotos(app);
        app.see("simulatedCamera");
        app.miss("lastPhotoButton");
        CHECK(app.read("statusText") == "Ready to capture fireworks");

        app.click("Start");
        app.readUntil("mainButton", "Stop");
        app.miss("settingsButton");
        app.seeChange("preview");
        app.readUntil("lightPower", "Light Power 0\\.\\d\\d");
        app.readUntil("lastPhotoButton", "All Photos: ([3-9]|\\d\\d)");
        app.readUntil("lastDifference", "Last Rise 0\\.\\d\\d");
        app.press("Space");
        app.readUntil("mainButton", "Start");
        app.readUntil("statusText", "Ready to capture fireworks\\.\\.\\.");
        app.press("Ctrl+Q");
        CHECK(app.wait() == 0);
        CHECK(app.complaints() == "");
        caught = app.count("Logged event: catch_photo ");
        CHECK(caught >= 3);
        CHECK(app.count("Logged event: start_capture ") == 1);
        CHECK(app.count("Logged event: stop_capture ") == 1);
    }
    CHECK(storedPhotos() == static_cast<std::int64_t>(caught));

    DrivenApp again(setup());
    CHECK(again.readUntil("lastPhotoButton", "All Photos: .*") == "All Photos: " + std::to_string(caught));
    again.miss("onboarding");
    CHECK(again.read("sensivityButton") == "Sensivity: High");
    CHECK(again.read("frequencyButton") == "Capture Frequency: 5 photos");
    again.close();
    CHECK(again.wait() == 0);
    CHECK(again.complaints() == "");
}
