#pragma once

#include "tests/main/MainFixture.h"
#include "tests/ui/ShownWindow.h"

namespace skyflare {

/// The real view of the main screen on fakes, used by clicks and keys.
struct ShownMain : MainFixture, ShownWindow {
    ShownMain()
    {
        app.setFirstLaunch(false);
        app.setManualFocus(true);
        screen->setViewUrl(QUrl("qrc:/Skyflare/Main/MainView.qml"));
        afterInput = [this] { time.runUntilIdle(); };
    }
    void bringUpMain(const QString &focused = "mainButton")
    {
        load();
        bringUp(screen, focused);
    }
};

} // namespace skyflare
