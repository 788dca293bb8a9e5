#include "screens/main/ForcedUpdate.h"
#include "tests/main/MainFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

TEST_CASE_FIXTURE(MainFixture,
                  "the onboarding never comes by itself again once it was tapped; the info button brings it")
{
    load();
    const auto shown = [this] {
        std::string steps;
        for (std::size_t step = 0; step < 4; ++step)
            steps += screen->onboardingView()->step(step).isHidden() ? '-' : 'x';
        return steps + (screen->onboardingView()->isHidden() ? " away" : "");
    };
    CHECK(shown() == "x---");
    CHECK_FALSE(defaults.hasObjectForKey("alreadyLaunched"));
    screen->onboardingScreenTapped();
    CHECK(defaults.stringForKey("alreadyLaunched") == "yes"); // already with the first tap
    CHECK_FALSE(app.firstLaunch());
    screen->startStopKeyPressed();
    CHECK_FALSE(screen->isRunning()); // the key belongs to the overlay
    screen->onboardingScreenTapped();
    CHECK(shown() == "---x");
    screen->onboardingScreenTapped();
    CHECK(shown() == "---x away");
    screen->infoButtonTapped();
    CHECK(shown() == "-x--");
    CHECK(events() == Lines{"button_tapped"});
}

TEST_CASE("a version is older by its digits as one number")
{
    CHECK(isUpdateForced("1.10", 111));
    CHECK_FALSE(isUpdateForced("1.10", 110));
    CHECK(isUpdateForced("1.2.3", 123.5));
    CHECK_FALSE(isUpdateForced("1.2.3", 122));
    CHECK_FALSE(isUpdateForced("", 9));
    CHECK_FALSE(isUpdateForced("1.2-beta", 999));
}

TEST_CASE_FIXTURE(MainFixture, "the forced update is asked for once, also before the cloud is configured")
{
    load();
    SUBCASE("a newer one is offered")
    {
        serveConfig(R"({"forceUpdateVersion": 111})");
        time.runUntilIdle();
        CHECK(popups(*screen) == Lines{"Update Available"});
        tapPopup(*screen);
        CHECK(opener.opened == Lines{"https://store.example/skyflare"});
        app.setAutoSave(true);
        time.advance(24h);
    }
    SUBCASE("no newer one")
    {
        serveConfig(R"({"forceUpdateVersion": "110"})");
        time.runUntilIdle();
        CHECK(popups(*screen).empty());
    }
    CHECK(network.requests.size() == 1);
}

TEST_CASE_FIXTURE(MainFixture, "the photo count and the last photo follow the store, wherever it changed")
{
    load();
    time.globalUserInitiated().async([this] {
        photoStore.saveImage(*Image::fromData(onePixelPng()));
        CHECK(screen->photoCountLabel()->isHidden()); // main's alone
    });
    time.runUntilIdle();
    CHECK(screen->photoCountLabel()->text() == "1");
    CHECK_FALSE(screen->photoCountLabel()->isHidden());
    CHECK_FALSE(screen->lastPhotoContainer()->isHidden());
    CHECK(screen->lastPhotoImageView()->hasImage());
    photoStore.deleteAllPhotos();
    CHECK(screen->photoCountLabel()->isHidden());
    CHECK(screen->lastPhotoContainer()->isHidden());
}

TEST_CASE_FIXTURE(MainFixture, "the gallery ends a run; the key that starts one belongs to the screen on top")
{
    load();
    screen->settingsButtonTapped();
    screen->startStopKeyPressed();
    CHECK_FALSE(screen->isRunning());
    screen->dismiss(Animated::No);

    screen->mainButtonTapped();
    console.clear();
    screen->lastPhotoButtonTapped();
    CHECK_FALSE(screen->isRunning());
    CHECK(events() == Lines{"stop_capture"});
    CHECK(std::dynamic_pointer_cast<PhotoListViewController>(screen->presentedViewController()) != nullptr);
}
