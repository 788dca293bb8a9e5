#include "tests/main/MainFixture.h"
#include "ui/Window.h"

#include <doctest/doctest.h>

#include <QQuickItem>
#include <QTest>

using namespace skyflare;

namespace {

constexpr int deadlineMs = 60000;

/// The main screen, where the keyboard opens the settings over it.
struct View {
    MainFixture main;
    Window window;

    View()
    {
        main.app.setFirstLaunch(false);
        main.screen->setViewUrl(QUrl("qrc:/Skyflare/Main/MainView.qml"));
        const std::string config =
            R"({"bottomMessage": {"buttonTitle": "More", "buttonURL": "https://a.example"}})";
        const HttpResponse answer{.status = 200, .headers = {}, .body = Bytes(config.begin(), config.end())};
        main.network.answers = {answer, answer}; // the main screen asks, too
        main.remoteConfig->configure("https://config.example/skyflare.json");
        main.load();
        window.setRootViewController(main.screen);
        window.makeKeyAndVisible();
        waitForFocus("mainButton");
    }
    QString focus()
    {
        const auto *item = window.quickWindow().activeFocusItem();
        return item ? item->objectName() : "";
    }
    void waitForFocus(const QString &name)
    {
        REQUIRE(
            QTest::qWaitFor([&] { return window.quickWindow().isActive() && focus() == name; }, deadlineMs));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&window.quickWindow(), key, modifiers);
        main.time.runUntilIdle();
    }
};

} // namespace

TEST_CASE("the settings are opened, gone through, changed and closed by keys")
{
    View view;
    auto &main = view.main;
    main.screen->mainButtonTapped();
    view.press(Qt::Key_Comma, Qt::ControlModifier); // not while a run is on
    CHECK(main.screen->presentedViewController() == nullptr);
    main.screen->mainButtonTapped();

    view.press(Qt::Key_Comma, Qt::ControlModifier);
    view.waitForFocus("closeButton");
    view.press(Qt::Key_Tab);
    CHECK(view.focus() == "switch0");
    view.press(Qt::Key_Space);
    CHECK(main.app.autoSave());
    view.press(Qt::Key_Return);
    CHECK_FALSE(main.app.autoSave());
    view.press(Qt::Key_Tab);
    CHECK(view.focus() == "switch1");
    view.press(Qt::Key_Space);
    CHECK(main.app.manualFocus());
    CHECK_FALSE(main.screen->isRunning()); // the key is the switch's
    view.press(Qt::Key_Tab);
    view.press(Qt::Key_Space);
    CHECK(main.opener.opened == Lines{"app-settings:"});
    view.press(Qt::Key_Tab);
    CHECK(view.focus() == "bottomButton");
    view.press(Qt::Key_Return);
    CHECK(main.opener.opened == Lines{"app-settings:", "https://a.example"});
    view.press(Qt::Key_Tab);
    CHECK(view.focus() == "closeButton");
    view.press(Qt::Key_Escape);
    CHECK(main.screen->presentedViewController() == nullptr);

    // Kept: it stands as it was left, and asks nobody again.
    view.press(Qt::Key_Comma, Qt::ControlModifier);
    view.waitForFocus("closeButton");
    const auto settings =
        std::static_pointer_cast<SettingsViewController>(main.screen->presentedViewController());
    CHECK(settings->tableView()->cells().at(1)->switchControl()->isOn());
    CHECK(main.network.requests.size() == 2);
}
