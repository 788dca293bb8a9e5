// The whole app in a sandbox, where it has no camera but the one that the desktop's portal opens for it.

#include "tests/app/AppFixture.h"
#include "tests/fakes/PrivateBus.h"
#include "tests/fakes/PrivatePipeWire.h"

using namespace skyflare;

namespace {

namespace fs = std::filesystem;

/// A portal of dbusmock's, on the bus and with the PipeWire of this process's environment.
class Portal {
public:
    /// @param answers  of its user, as JSON: see camera_portal.py
    explicit Portal(const std::string &answers)
        : process_({"/usr/bin/python3", "-m", "dbusmock", "--session", "--template", CAMERA_PORTAL,
                    "--parameters", R"({"answers": )" + answers + "}"})
    {
        waitForLine("ready");
    }
    void waitForLine(const std::string &word)
    {
        while (const auto line = process_.readLine()) {
            if (line->find(word) != line->npos)
                return;
        }
        process_.kill();
        FAIL("the portal has ended before \"" << word << "\": " << process_.errors());
    }

private:
    ChildProcess process_;
};

struct Sandbox : AppFixture {
    const PrivatePipeWire pipeWire;
    const std::unique_ptr<ChildProcess> camera = pipeWire.camera("Night Watch"); // flashes
    const PrivateBus bus;

    /// Runs what follows with another root: the machine's, and the file by which a sandbox is known.
    [[nodiscard]] std::vector<std::string> command() const
    {
        folder.write("flatpak-info", "[Application]\n");
        std::vector<std::string> words{"bwrap", "--die-with-parent", "--ro-bind",
                                       (folder / "flatpak-info").string(), "/.flatpak-info"};
        for (const auto &entry : fs::directory_iterator("/")) {
            const std::string path = entry.path().string();
            if (entry.is_symlink())
                words.insert(words.end(), {"--symlink", fs::read_symlink(path).string(), path});
            else if (entry.is_directory())
                words.insert(words.end(), {"--dev-bind", path, path});
        }
        return words;
    }
    [[nodiscard]] AppSetup setup() const
    {
        AppSetup inSandbox{.folder = folder.path(), .options = {}};
        inSandbox.environment = command();
        inSandbox.environment.insert(
            inSandbox.environment.begin(),
            {"DBUS_SESSION_BUS_ADDRESS=" + bus.address(), "PIPEWIRE_RUNTIME_DIR=/nowhere"});
        return inSandbox;
    }
};

/// What the first tap on Start comes to.
enum class FirstTap { Runs, IsRefused, HearsNothing };

struct Row {
    std::string answers; ///< of the portal's user, []: there is no camera; empty: there is no portal
    FirstTap firstTap;
    std::string complaint{}; ///< the app's, in one line
};

const Row rows[] = {
    {"[]", FirstTap::Runs},
    {"[0]", FirstTap::Runs},
    {"[1, 0]", FirstTap::IsRefused},
    {"[2, 0]", FirstTap::IsRefused},
    {R"(["silence", 0])", FirstTap::HearsNothing},
    {R"(["crash"])", FirstTap::IsRefused, "The camera cannot be asked for: the desktop portal has gone\n"},
    {"", FirstTap::IsRefused,
     "The camera may not be used here: the desktop has no portal for it: The name "
     "org.freedesktop.portal.Desktop was not provided by any .service files\n"},
};

} // namespace

TEST_CASE("in a sandbox the desktop is asked for the camera, at each tap until somebody has said yes")
{
    if (runProgram({"bwrap", "--dev-bind", "/", "/", "true"}) != 0) {
        MESSAGE("NOT TESTED: this machine does not let us make a sandbox (bwrap)");
        return;
    }
    for (const Row &row : rows) {
        CAPTURE(row.answers);
        const Sandbox sandbox;
        auto portal = row.answers.empty() ? nullptr : std::make_unique<Portal>(row.answers);
        DrivenApp app(sandbox.setup());
        AppFixture::passOnboarding(app);
        if (row.answers == "[]")
            app.see("simulatedCamera");
        else
            app.miss("simulatedCamera");
        app.click("Start");
        if (row.firstTap == FirstTap::HearsNothing)
            portal->waitForLine("AccessCamera");
        if (row.firstTap == FirstTap::IsRefused) {
            app.see("We need your permission");
            app.press("Escape");
            app.miss("We need your permission");
        }
        if (!row.complaint.empty()) // it is back
            portal = std::make_unique<Portal>("[0]");
        if (row.firstTap != FirstTap::Runs)
            app.click("Start");
        app.readUntil("mainButton", "Stop");
        app.seeChange("preview");
        app.see("lastPhotoButton");
        app.close();
        CHECK(app.wait() == 0);
        CHECK(sandbox.storedPhotos() == static_cast<std::int64_t>(app.count(AppFixture::caughtLine)));
        CHECK(app.complaints() == row.complaint);
    }
}
