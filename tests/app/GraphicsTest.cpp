// The app on a real X server, drawn by OpenGL.

#include "tests/app/AppFixture.h"

using namespace skyflare;

namespace {

/// An X server that nobody looks at. It takes a number that is free.
struct XServer {
    ChildProcess process{
        {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"}};
    std::string display;

    XServer()
    {
        const auto number = process.readLine();
        if (!number)
            process.kill();
        REQUIRE_MESSAGE(number, "Xvfb does not come up: " << process.errors());
        display = ':' + *number;
    }
};

} // namespace

TEST_CASE_FIXTURE(AppFixture, "OpenGL draws the screen and the live picture, and nobody complains")
{
    const XServer server;
    AppSetup withX = setup();
    // What Mesa compiles it registers with the unwinder under a lock, and allocates there: the address
    // sanitizer must not unwind as well. Mesa's own leaks are not ours.
    withX.environment = {"DISPLAY=" + server.display, "QT_QPA_PLATFORM=xcb",
                         "QT_QUICK_BACKEND=", "LIBGL_ALWAYS_SOFTWARE=1", "ASAN_OPTIONS=detect_leaks=0"};
    DrivenApp app(withX);
    passOnboarding(app);
    CHECK(app.graphics() == "OpenGL");
    app.press("Space");
    app.readUntil("mainButton", "Stop");
    app.seeChange("preview");
    app.seeChange("lightPower");
    app.resize(1280, 800);
    app.seeChange("preview");
    app.press("Ctrl+Q");
    CHECK(app.wait() == 0);
    CHECK(app.complaints() == "");
}
