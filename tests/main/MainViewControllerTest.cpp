#include "screens/main/ForcedUpdate.h"
#include "tests/main/MainFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

Lines titles(const SelectionContainer &container)
{
    Lines all;
    for (const ButtonOutlet *option : container.options())
        all.push_back(option->text());
    return all;
}

} // namespace

TEST_CASE_FIXTURE(MainFixture, "the first launch shows the settings' defaults, no photo, and the onboarding")
{
    load();
    CHECK(titles(*screen->sensitivitySelectionsContainer()) ==
          Lines{"Ultra Low", "Very Low", "Low", "Medium", "High", "Very High", "Extreme"});
    CHECK(titles(*screen->frequencySelectionsContainer()) ==
          Lines{"1 photo", "2 photos", "3 photos", "4 photos", "5 photos"});
    CHECK(screen->sensivityLabel()->text() == "Medium");
    CHECK(screen->frequencyLabel()->text() == "1 photo");
    CHECK(screen->lightCurve()->rise() == 0.10000000149011612);
    CHECK(screen->statusText()->text() == "Ready to capture fireworks");
    CHECK(screen->mainButton()->text() == "Start");
    CHECK(screen->infoButton()->accessibleName() == "How it works");
    CHECK(screen->photoCountLabel()->isHidden());
    CHECK(screen->lastPhotoContainer()->isHidden());
    CHECK(screen->sensitivitySelectionsContainer()->isHidden());
    CHECK(screen->cameraBorderView()->alpha() == 0);
    CHECK_FALSE(screen->infoBar()->isHidden());
    CHECK_FALSE(screen->onboardingView()->isHidden());
    CHECK(screen->step0_text1()->text() == "Welcome to Skyflare!");
    CHECK(screen->step2_text1()->text() == "Capture Frequency");
    CHECK(screen->simulatedCameraLabel()->isHidden());
    screen->setCameraKind(CameraKind::Simulated);
    CHECK_FALSE(screen->simulatedCameraLabel()->isHidden());
}

TEST_CASE_FIXTURE(MainFixture, "an option is felt, counts at once, is stored and closes its list")
{
    load();
    screen->frequencyButtonTapped();
    screen->sensivityButtonTapped();
    CHECK_FALSE(screen->sensitivitySelectionsContainer()->isHidden());
    CHECK(screen->frequencySelectionsContainer()->isHidden()); // one list at a time
    haptics.impacts.clear();

    choose(*screen->sensitivitySelectionsContainer(), "High", &MainViewController::sensivitySelected);
    CHECK(haptics.impacts == std::vector{ImpactFeedbackStyle::Medium});
    CHECK(screen->captureManager().brightnessThreshold() == 0.05000000074505806);
    CHECK(UserDefaults(folder / "settings.plist", console).floatForKey("sensivity") == 0.05f);
    CHECK(screen->sensivityLabel()->text() == "High");
    CHECK(screen->lightCurve()->rise() == 0.05000000074505806);
    CHECK(screen->sensitivitySelectionsContainer()->isHidden());

    choose(*screen->frequencySelectionsContainer(), "3 photos", &MainViewController::frequencySelected);
    CHECK(screen->captureManager().captureInterval() == 0.333);
    CHECK(app.frequency() == 0.333);
    CHECK(screen->frequencyLabel()->text() == "3 photos");

    SUBCASE("a title that no level has changes nothing")
    {
        screen->sensivityButtonTapped();
        haptics.impacts.clear();
        choose(*screen->sensitivitySelectionsContainer(), "Higher", &MainViewController::sensivitySelected);
        CHECK(haptics.impacts.empty());
        CHECK(app.sensivity() == 0.05f);
        CHECK_FALSE(screen->sensitivitySelectionsContainer()->isHidden());
        screen->escapePressed();
        CHECK(screen->sensitivitySelectionsContainer()->isHidden());
    }
    SUBCASE("a stored value that no level has leaves the label, and the manager, alone")
    {
        app.setSensivity(0.15f);
        CHECK(screen->sensivityLabel()->text() == "High");
        CHECK(screen->captureManager().brightnessThreshold() == 0.05000000074505806);
    }
}

TEST_CASE_FIXTURE(MainFixture, "the onboarding goes on by taps, and never comes by itself again")
{
    load();
    const auto shown = [this] {
        std::string steps;
        for (std::size_t step = 0; step < 4; ++step)
            steps += screen->onboardingView()->step(step).isHidden() ? '-' : 'x';
        return steps + (screen->onboardingView()->isHidden() ? " away" : "");
    };
    OnboardingView &overlay = *screen->onboardingView();
    CHECK(shown() == "x---");
    CHECK_FALSE(defaults.hasObjectForKey("alreadyLaunched"));
    screen->onboardingScreenTapped();
    CHECK(shown() == "-x--");
    CHECK(defaults.stringForKey("alreadyLaunched") == "yes"); // already with the first tap
    CHECK_FALSE(app.firstLaunch());

    SUBCASE("a tap on the last step ends it; the info button begins at the second one")
    {
        screen->startStopKeyPressed();
        CHECK_FALSE(screen->isRunning()); // the key belongs to the overlay
        CHECK(overlay.nextButton()->text() == "Next");
        screen->onboardingScreenTapped();
        CHECK(shown() == "---x");
        CHECK(overlay.nextButton()->text() == "Done");
        screen->onboardingScreenTapped();
        CHECK(shown() == "---x away");
        screen->infoButtonTapped();
        CHECK(shown() == "-x--");
        REQUIRE(events() == Lines{"button_tapped"});
        CHECK(console.lines().back().find("\"buttonName\": \"infoButton\"") != std::string::npos);
    }
    SUBCASE("what is put into the overlay is a step, unless it is a button")
    {
        ViewOutlet decoration;
        ButtonOutlet button;
        overlay.addSubview(button);
        overlay.addSubview(decoration);
        for (int tap = 0; tap < 3; ++tap)
            screen->onboardingScreenTapped();
        CHECK(shown() == "----");
        CHECK_FALSE(decoration.isHidden());
        screen->onboardingScreenTapped();
        CHECK(overlay.isHidden());
    }
}

TEST_CASE("a version is older by its digits as one number")
{
    struct Row {
        std::string_view version;
        double least;
        bool expected;
    };
    static constexpr Row rows[] = {{"1.10", 111, true},   {"1.10", 110, false}, {"1.2.3", 123.5, true},
                                   {"1.2.3", 122, false}, {"", 9, false},       {"1.2-beta", 999, false}};
    for (const Row &row : rows) {
        CAPTURE(row.version);
        CAPTURE(row.least);
        CHECK(isUpdateForced(row.version, row.least) == row.expected);
    }
}

TEST_CASE_FIXTURE(MainFixture, "the forced update is asked for once, also before the cloud is configured")
{
    const auto answer = [this](Result<HttpResponse> given) {
        network.answers.push_back(std::move(given));
        load();
        remoteConfig->configure("https://config.example/app.json");
        time.runUntilIdle();
        CHECK(network.requests.size() == 1);
    };
    const auto json = [](std::string_view body) {
        return HttpResponse{.status = 200, .body = {body.begin(), body.end()}};
    };
    SUBCASE("a newer one is offered")
    {
        answer(json(R"({"forceUpdateVersion": 111})"));
        CHECK(popups() == Lines{"Update Available | Please update to the latest version | Update"});
        CHECK(screen->popups()->popups().back()->icon()->symbol() ==
              "arrow.trianglehead.2.clockwise.rotate.90.circle.fill");
        tapPopup();
        CHECK(opener.opened == Lines{"https://store.example/skyflare"});
        app.setAutoSave(true);
        time.advance(24h);
        CHECK(network.requests.size() == 1);
    }
    SUBCASE("no newer one")
    {
        answer(json(R"({"forceUpdateVersion": "110"})"));
        CHECK(popups().empty());
    }
    SUBCASE("no answer that is any good")
    {
        answer(HttpResponse{.status = 500});
        CHECK(popups().empty());
        REQUIRE(console.lines().size() == 1);
        CHECK(console.lines()[0].starts_with("Error fetching config: "));
    }
}

TEST_CASE_FIXTURE(MainFixture, "the photo count and the last photo follow the store, wherever it changed")
{
    load();
    PhotoDataManager photos({store, notifications, time, console});
    time.globalUserInitiated().async([&] {
        photos.saveImage(*Image::fromData(onePixelPng()));
        CHECK(screen->photoCountLabel()->isHidden()); // main's alone
    });
    time.runUntilIdle();
    CHECK(screen->photoCountLabel()->text() == "1");
    CHECK_FALSE(screen->photoCountLabel()->isHidden());
    CHECK_FALSE(screen->lastPhotoContainer()->isHidden());
    CHECK(screen->lastPhotoImageView()->hasImage());
    photos.deleteAllPhotos();
    CHECK(screen->photoCountLabel()->isHidden());
    CHECK(screen->lastPhotoContainer()->isHidden());
}

TEST_CASE_FIXTURE(MainFixture, "gallery and settings come up, the settings' screen being made once")
{
    load();
    screen->settingsButtonTapped();
    const auto settings = screen->presentedViewController();
    CHECK(std::dynamic_pointer_cast<SettingsViewController>(settings) != nullptr);
    screen->dismiss(Animated::No);
    screen->settingsButtonTapped();
    CHECK(screen->presentedViewController() == settings);
    screen->startStopKeyPressed();
    CHECK_FALSE(screen->isRunning()); // the key belongs to the settings
    screen->dismiss(Animated::No);

    screen->mainButtonTapped();
    console.clear();
    screen->lastPhotoButtonTapped();
    CHECK_FALSE(screen->isRunning());
    CHECK(events() == Lines{"stop_capture"});
    CHECK(std::dynamic_pointer_cast<PhotoListViewController>(screen->presentedViewController()) != nullptr);
}
