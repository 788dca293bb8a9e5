#include "platform/base/AsioQueues.h"
#include "platform/linux/DesktopURLOpener.h"
#include "platform/linux/DeviceCameraAuthorization.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>

using namespace skyflare;

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
    const auto applications = folder / "applications";
    std::filesystem::create_directories(applications);
    const std::string pipe = (folder / "opened").string();
    REQUIRE(mkfifo(pipe.c_str(), 0600) == 0);
    const std::string program = (folder / "systemsettings").string();
    // The signals that it blocks, and its arguments.
    std::ofstream(program)
        << "#!/bin/sh\nwhile read -r name mask; do [ $name = SigBlk: ] && break; done < /proc/$$/status\n"
        << "printf '%s %s\\n' $mask \"$*\" > " << pipe << "\n";
    const std::string broken = (folder / "lxqt-config").string();
    std::ofstream(broken) << "#!/no/such/shell\n";
    for (const std::string &file : {program, broken})
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    std::ofstream(applications / "browser.desktop")
        << "[Desktop Entry]\nType=Application\nName=Browser\nExec=" << program << " %u\n";
    std::ofstream(folder / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/https=browser.desktop\n";
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    setenv("XDG_DATA_DIRS", folder.path().c_str(), 1);
    setenv("XDG_CONFIG_DIRS", folder.path().c_str(), 1);
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

    setenv("XDG_CURRENT_DESKTOP", "GNOME-Like", 1);
    CHECK(!opener.canOpenURL("app-settings:"));
    int shown = 0;
    DesktopURLOpener withPage({queues.globalUserInitiated(), *main, console, [&] { ++shown; }});
    CHECK(withPage.canOpenURL("app-settings:"));
    withPage.openURL("app-settings:");
    CHECK(shown == 1);
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
