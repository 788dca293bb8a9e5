// The whole app on a camera of PipeWire's, which flashes, dies and comes back.

#include "tests/app/AppFixture.h"
#include "tests/fakes/PrivatePipeWire.h"

using namespace skyflare;

namespace {

const std::string dark = "Light Power 0\\.13";
const std::string flash = "Light Power 1\\.00";

/// Dark, and white for three pictures in forty.
struct FlashingCamera : AppFixture {
    PrivatePipeWire pipeWire;
    std::unique_ptr<ChildProcess> camera = pipeWire.camera("Night Watch");

    [[nodiscard]] AppSetup setup() const
    {
        return {.folder = folder.path(), .options = {"--camera", "night watch"}};
    }
};

} // namespace

TEST_CASE_FIXTURE(FlashingCamera,
                  "a camera that is lost stops the run and says so; Start works when it is back")
{
    DrivenApp app(setup());
    passOnboarding(app);
    start(app);
    app.miss("simulatedCamera");
    app.see("lastPhotoButton");
    camera->kill();
    app.readUntil("statusText", "The camera is gone\\. Connect it again, then tap Start\\.");
    CHECK(app.read("mainButton") == "Start");
    app.see("settingsButton");
    const std::string before = app.read("lastPhotoButton");

    camera = pipeWire.camera("Night Watch");
    std::size_t start = 0;
    do { // until the app has heard of it
        start = app.lines().size();
        app.click("Start");
    } while (app.waitForOneOf({caughtLine, "Logged event: stop_capture "}, start) != caughtLine);
    app.readUntil("lastPhotoButton", "(?!" + before + "$).*"); // another one
    app.close();
    CHECK(app.wait() == 0);
    CHECK(storedPhotos() == static_cast<std::int64_t>(app.count(caughtLine)));
}

TEST_CASE_FIXTURE(FlashingCamera, "a window that is closed while a photo is being saved keeps it")
{
    DrivenApp app(setup());
    passOnboarding(app);
    app.click("Start");
    app.see("lastPhotoButton"); // from now on every flash is a photo
    app.readUntil("lightPower", dark);
    const auto store = database();
    REQUIRE(store->execute("BEGIN IMMEDIATE")); // nobody else can write
    const std::int64_t before = store->number("SELECT count(*) FROM PhotoEntity").value();
    app.read("lightPower"); // with all that was printed until now
    app.waitForOneOf({"Fotoğraf çekme işlemi başlatıldı."}, app.lines().size());
    for (const std::string &light : {flash, dark, flash}) // the frame that it is taken from is among these
        app.readUntil("lightPower", light);
    app.close();
    app.waitForLine("Logged event: stop_capture ");
    REQUIRE(store->execute("ROLLBACK"));
    CHECK(app.wait() == 0);
    CHECK(storedPhotos() > before);
    CHECK(storedPhotos() == static_cast<std::int64_t>(app.count(caughtLine)));
}
