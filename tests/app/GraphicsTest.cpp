// The app on a real X server, drawn by OpenGL.

#include "tests/app/AppFixture.h"
#include "tests/app/XServer.h"

using namespace skyflare;

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
    app.press("Ctrl+Q");
    CHECK(app.wait() == 0);
    CHECK(app.complaints() == "");
}
