// The app as a screen reader and a keyboard find it.

#include "tests/app/AppFixture.h"
#include "tests/app/ScreenReader.h"
#include "tests/app/XServer.h"

#include <algorithm>
#include <set>
#include <string>

using namespace skyflare;

namespace {

struct ReadApp : AppFixture {
    const XServer server;
    ScreenReader reader;
    DrivenApp app{setupToRead()};

    [[nodiscard]] AppSetup setupToRead() const
    {
        AppSetup read = setup();
        read.environment = reader.environment();
        read.environment.insert(read.environment.end(), {"DISPLAY=" + server.display, "QT_QPA_PLATFORM=xcb"});
        return read;
    }

    /// The controls that Tab comes to until it is where it was before.
    std::set<std::string> tabWalk()
    {
        std::set<std::string> paths;
        for (;;) {
            app.press("Tab");
            const auto items = reader.items();
            const auto focused = std::ranges::find_if(items, [](const AccessibleItem &item) {
                return item.isFocused && item.isControl(); // a dialog has it with what is in it
            });
            if (focused == items.end() || !paths.insert(focused->path).second)
                return paths;
        }
    }

    /// Every control has a name and can be used, also by keyboard. @return their names, by the alphabet
    std::string checkControls()
    {
        std::set<std::string> names;
        const auto items = reader.items();
        const auto reached = tabWalk();
        for (const AccessibleItem &item : items) {
            if (!item.isControl())
                continue;
            CAPTURE(item.role);
            CAPTURE(item.name);
            CHECK(item.name != "");
            CHECK(item.isFocusable);
            const bool isArrowKeys = item.parentRole == "list"; // Tab comes to one of them
            CHECK((!item.isEnabled || isArrowKeys || reached.contains(item.path)));
            names.insert(item.name);
        }
        std::string line;
        for (const std::string &name : names)
            line += name + " | ";
        return line;
    }

    /// The first one whose name begins so.
    void press(const std::string &start)
    {
        const auto items = reader.items();
        const auto item = std::ranges::find_if(
            items, [&](const AccessibleItem &one) { return one.isControl() && one.name.starts_with(start); });
        REQUIRE(item != items.end());
        CHECK(item->press());
    }
};

} // namespace

TEST_CASE_FIXTURE(ReadApp, "a screen reader and the keyboard find every control of a screen, and no other")
{
    app.see("onboarding");
    CHECK(checkControls() == "Next | ");
    passOnboarding(app);
    CHECK(checkControls() ==
          "Capture Frequency: 1 photo | How it works | Sensivity: Medium | Settings | Start | ");
    chooseHighAndFivePhotos(app);
    press("Start");
    app.readUntil("mainButton", "Stop");
    reader.waitForName("alert", "Fireworks detected!");
    app.press("Space");
    app.readUntil("mainButton", "Start");

    press("Settings");
    app.see("closeButton");
    CHECK(checkControls() == "App Language | Auto Save | Close | Manual Focus | ");
    app.press("Escape");
    app.miss("closeButton");
    press("All Photos");
    seeAllCounted(app);
    CHECK(checkControls().starts_with("Close | Delete All | Photo "));
    press("Delete All");
    app.seeFocus("action");
    CHECK(checkControls() == "Close | Yes, Delete All | ");
    app.press("Escape");
    app.miss("card");
    press("Photo ");
    app.see("imageContainer");
    CHECK(checkControls() == "Close | Delete Photo | Save to Photos | ");
}
