// The app on a real X server, drawn by OpenGL.

#include "platform/base/Files.h"
#include "platform/image/Image.h"
#include "tests/app/AppFixture.h"

#include <array>
#include <set>

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

std::size_t colours(const std::filesystem::path &file)
{
    const auto bytes = readFile(file);
    REQUIRE(bytes);
    const auto pixels = Image::fromData(*bytes).value().pixels();
    REQUIRE(pixels);
    std::set<std::array<std::uint8_t, 3>> seen;
    for (std::size_t i = 0; i + 2 < pixels->rgb.size(); i += 3)
        seen.insert({pixels->rgb[i], pixels->rgb[i + 1], pixels->rgb[i + 2]});
    return seen.size();
}

} // namespace

TEST_CASE_FIXTURE(AppFixture, "OpenGL draws the screen and the live picture, and nobody complains")
{
    const XServer server;
    AppSetup withX = setup();
    withX.environment = {"DISPLAY=" + server.display, "QT_QPA_PLATFORM=xcb",
                         "QT_QUICK_BACKEND=", "LIBGL_ALWAYS_SOFTWARE=1"};
    DrivenApp app(withX);
    passOnboarding(app);
    CHECK(app.graphics() == "OpenGL");
    app.press("Space");
    app.readUntil("mainButton", "Stop");
    app.seeChange("preview");
    app.seeChange("preview");
    app.paint(folder / "running.png");
    CHECK(colours(folder / "running.png") > 100);
    app.resize(1280, 800);
    app.seeChange("preview");
    app.press("Ctrl+Q");
    CHECK(app.wait() == 0);
    CHECK(app.complaints() == "");
}
