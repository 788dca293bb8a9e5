#include "tests/main/ShownMain.h"

using namespace skyflare;

TEST_CASE_FIXTURE(ShownMain,
                  "the settings are opened over the main screen, gone through, changed and closed by keys")
{
    const auto *config = R"({"bottomMessage": {"buttonTitle": "More", "buttonURL": "https://a.example"}})";
    serveConfig(config);
    serveConfig(config); // the main screen asks, too
    app.setManualFocus(false);
    bringUpMain();
    screen->mainButtonTapped();
    press(Qt::Key_Comma, Qt::ControlModifier); // not while a run is on
    CHECK(screen->presentedViewController() == nullptr);
    screen->mainButtonTapped();

    press(Qt::Key_Comma, Qt::ControlModifier);
    waitForFocus("closeButton");
    press(Qt::Key_Tab);
    CHECK(focus() == "switch0");
    press(Qt::Key_Space);
    CHECK(app.autoSave());
    press(Qt::Key_Return);
    CHECK_FALSE(app.autoSave());
    act("switch0", "Toggle");
    CHECK(app.autoSave());
    press(Qt::Key_Tab);
    CHECK(focus() == "switch1");
    press(Qt::Key_Space);
    CHECK(app.manualFocus());
    CHECK_FALSE(screen->isRunning()); // the key is the switch's
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    CHECK(opener.opened == Lines{"app-settings:"});
    press(Qt::Key_Tab);
    CHECK(focus() == "bottomButton");
    press(Qt::Key_Return);
    CHECK(opener.opened == Lines{"app-settings:", "https://a.example"});
    press(Qt::Key_Tab);
    CHECK(focus() == "closeButton");
    press(Qt::Key_Escape);
    CHECK(screen->presentedViewController() == nullptr);

    // Kept: it stands as it was left, and asks nobody again.
    press(Qt::Key_Comma, Qt::ControlModifier);
    waitForFocus("closeButton");
    const auto settings = std::static_pointer_cast<SettingsViewController>(screen->presentedViewController());
    CHECK(settings->tableView()->cells().at(1)->switchControl()->isOn());
    CHECK(network.requests.size() == 2);
}
