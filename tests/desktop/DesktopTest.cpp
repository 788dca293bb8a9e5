#include "platform/base/AsioQueues.h"
#include "platform/linux/DesktopURLOpener.h"
#include "platform/linux/DeviceCameraAuthorization.h"
#include "platform/linux/NotificationStoreReview.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

using namespace skyflare;

namespace {

/// Keeps what it is to show; the test answers.
struct RecordingBoard final : NotificationBoard {
    struct Asked {
        Content content;
        Shown shown;
        Chosen chosen;
    };
    std::vector<Asked> asked;

    void askWhetherThere(Shown /*answered*/) override {}
    void show(Content content, Shown shown, Chosen chosen) override
    {
        asked.push_back({std::move(content), std::move(shown), std::move(chosen)});
    }
    void remove(const std::string & /*identifier*/) override {}
};

} // namespace

TEST_CASE("only addresses of a few kinds are opened")
{
    for (const char *good :
         {"https://example.org/a?b=%20#c", "HTTP://example.org", "mailto:help@example.org?subject=Hi",
          "appstream://org.example.app", "app-settings:"})
        CHECK(isOpenableURL(good));
    for (const char *bad : {"", "example.org", "file:///etc/passwd", "javascript:alert(1)", "app-settings:x",
                            "1https://a", "https", ":", "https://example.org/a b", "https://example.org/%2",
                            "https://a\n", "https://ü.example"})
        CHECK(!isOpenableURL(bad));
    CHECK(formsURL("file:///etc/passwd"));
    CHECK(!formsURL("https://example.org/%zz"));
}

TEST_CASE("an address goes to the program that the user has for it, and the settings to the desktop's")
{
    // One home for all of the test: GIO looks at its environment once.
    const TemporaryFolder folder;
    const std::string pipe = (folder / "opened").string();
    REQUIRE(mkfifo(pipe.c_str(), 0600) == 0);
    const std::string program = (folder / "systemsettings").string();
    // The signals that it blocks, and its arguments.
    folder.write(program, "#!/bin/sh\nwhile read -r name mask; do [ $name = SigBlk: ] && break; done < "
                          "/proc/$$/status\nprintf '%s %s\\n' $mask \"$*\" > " +
                              pipe + "\n");
    folder.write("lxqt-config", "#!/no/such/shell\n");
    for (const auto &file : {folder / "systemsettings", folder / "lxqt-config"})
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    folder.write("applications/browser.desktop",
                 "[Desktop Entry]\nType=Application\nName=Browser\nExec=" + program + " %u\n");
    folder.write("mimeapps.list", "[Default Applications]\nx-scheme-handler/https=browser.desktop\n");
    for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_DIRS"})
        setenv(name, folder.path().c_str(), 1);
    setenv("XDG_CURRENT_DESKTOP", "Some:KDE", 1);
    setenv("PATH", (folder.path().string() + ":" + std::getenv("PATH")).c_str(), 1);
    std::fstream lines(pipe, std::ios::in | std::ios::out); // both, so that it never comes to an end
    const auto opened = [&] {
        std::string line;
        std::getline(lines, line);
        return line;
    };

    sigset_t ours; // what the app does
    sigemptyset(&ours);
    sigaddset(&ours, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ours, nullptr);

    AsioQueues queues;
    const auto main = queues.makeSerialQueue("main");
    RecordingConsole console;
    DesktopURLOpener opener({queues.globalUserInitiated(), *main, console, {}});
    CHECK(opener.canOpenURL("https://example.org/"));
    CHECK(!opener.canOpenURL("http://example.org/")); // nobody does
    CHECK(!opener.canOpenURL("file:///etc/passwd"));
    opener.openURL("https://example.org/?a=$(b)&c='d");
    CHECK(opened() == "0000000000000000 https://example.org/?a=$(b)&c='d");
    CHECK(opener.canOpenURL("app-settings:"));
    opener.openURL("app-settings:");
    CHECK(opened() == "0000000000000000 kcm_regionandlang");
    CHECK(console.reports().empty());

    opener.openURL("file:///etc/passwd");
    opener.openURL("http://example.org/");
    queues.drainGlobal();
    REQUIRE(console.reports().size() == 2);
    CHECK(console.reports()[0] == "This address is not opened: file:///etc/passwd");
    CHECK(console.reports()[1].starts_with("Nothing opens http://example.org/: "));

    int shown = 0;
    DesktopURLOpener withPage({queues.globalUserInitiated(), *main, console, [&] { ++shown; }});
    setenv("XDG_CURRENT_DESKTOP", "GNOME-Like", 1);
    CHECK(!opener.canOpenURL("app-settings:"));
    CHECK(withPage.canOpenURL("app-settings:"));
    withPage.openURL("app-settings:");
    setenv("XDG_CURRENT_DESKTOP", "LXQt:KDE", 1); // what it is, then what it is like
    withPage.openURL("app-settings:");
    queues.drainGlobal();
    REQUIRE(main->sync([&] { CHECK(shown == 2); }));
    CHECK(console.reports().back().starts_with("The settings do not open: "));
    pthread_sigmask(SIG_UNBLOCK, &ours, nullptr);
}

TEST_CASE("a camera is authorised unless the kernel refuses its device")
{
    VirtualTime time;
    for (const char *device : {"", "/dev/null", "/dev/no-such-camera"})
        CHECK(DeviceCameraAuthorization(device, time.mainQueue()).authorizationStatus() ==
              CameraAuthorizationStatus::Authorized);
}

TEST_CASE("a review is asked for once a version, where it can be given; choosing it opens its page")
{
    const TemporaryFolder folder;
    RecordingConsole console;
    RecordingURLOpener opener;
    const auto board = std::make_shared<RecordingBoard>();
    const auto &asked = board->asked;
    const auto review = [&](const std::string &version) {
        return std::make_shared<NotificationStoreReview>(NotificationStoreReview::Services{
            board, opener, console, folder / "review.plist", version, "https://store.example/"});
    };
    const auto first = review("1.0");
    opener.opensNothing = true;
    first->requestReview();
    CHECK(asked.empty());
    opener.opensNothing = false;
    first->requestReview();
    first->requestReview(); // the desktop has not answered yet
    REQUIRE(asked.size() == 1);
    CHECK(asked[0].content.summary == "Do you like Skyflare?");
    CHECK(asked[0].content.actions.size() == 2);
    CHECK(asked[0].content.choice == NotificationBoard::Choice::Needed);
    asked[0].shown(Error{"notifications", 0, "full"}); // that does not count
    first->requestReview();
    REQUIRE(asked.size() == 2);
    asked[1].shown({});
    first->requestReview();
    review("1.0")->requestReview();
    CHECK(asked.size() == 2);
    asked[1].chosen({"review", ""});
    CHECK(opener.opened == std::vector<std::string>{"https://store.example/"});
    review("1.1")->requestReview();
    CHECK(asked.size() == 3);
    CHECK(console.reports().empty());
}
