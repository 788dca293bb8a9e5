#include "platform/base/StandardConsole.h"
#include "platform/base/Text.h"
#include "platform/linux/MachineFacts.h"
#include "platform/linux/UserDirectories.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

using namespace skyflare;

TEST_CASE("the console writes whole lines, and drops them once nobody reads")
{
    std::array<int, 2> ends{};
    REQUIRE(pipe(ends.data()) == 0);
    StandardConsole console(ends[1], ends[1]);
    console.printLine("Fotoğraf");
    console.reportLine("damaged");
    std::array<char, 64> text{};
    const auto size = read(ends[0], text.data(), text.size());
    CHECK(std::string(text.data(), static_cast<std::size_t>(size)) == "Fotoğraf\ndamaged\n");
    close(ends[0]);
    console.printLine("nobody reads this"); // SIGPIPE would end the test here
    close(ends[1]);
}

TEST_CASE("folders follow the user's environment, or stand below one folder")
{
    setenv("HOME", "/home/ayse", 1);
    setenv("XDG_DATA_HOME", "/disk/data", 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    unsetenv("XDG_STATE_HOME");
    setenv("XDG_CACHE_HOME", "", 1);
    const auto standard = UserDirectories::standard();
    CHECK(standard.data == "/disk/data/skyflare");
    CHECK(standard.config == "/home/ayse/.config/skyflare");
    CHECK(standard.state == "/home/ayse/.local/state/skyflare");
    CHECK(standard.cache == "/home/ayse/.cache/skyflare");
    CHECK(standard.pictures.filename() == "Skyflare");

    const auto under = UserDirectories::under("/tmp/here");
    CHECK(under.config == "/tmp/here/config");
    CHECK(under.pictures == "/tmp/here/Pictures/Skyflare");
}

TEST_CASE("a quoted text is one line of valid UTF-8 that a terminal shows as it is")
{
    CHECK(skyflare::quoted("ğ \"a\"\\\n\t\x1B[2J") == R"("ğ \"a\"\\\n\t\u{1B}[2J")");
    CHECK(skyflare::quoted(std::string_view("\0\xFF\xC2\x85\xE2\x80\xA8\xE2\x80\xAE\xF0\x9F\x8E\x86", 14)) ==
          "\"\\u{00}\xEF\xBF\xBD\\u{85}\\u{2028}\\u{202E}\xF0\x9F\x8E\x86\"");
    CHECK(skyflare::quoted("\xF0\x9F\x8E") == "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""); // cut short
}

TEST_CASE("the machine says what it is, as far as it knows")
{
    const TemporaryFolder root;
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        unsetenv(variable);
    CHECK(MachineFacts::read(root.path()) == MachineFacts{});

    root.write("usr/lib/os-release", "ID=other\n");
    root.write("etc/os-release", "VERSION_ID=\"12\"\nID_LIKE=sid\nID=debian\n");
    root.write("sys/class/dmi/id/product_name", "To Be Filled By O.E.M.\n");
    root.write("sys/class/dmi/id/sys_vendor", "LENOVO\n");
    root.write("proc/device-tree/model", std::string_view("Raspberry Pi 4\0", 15));
    setenv("LANG", "C.UTF-8", 1);
    CHECK(MachineFacts::read(root.path()) ==
          MachineFacts{.osVersion = "debian 12", .deviceModel = "Raspberry Pi 4"});

    root.write("sys/class/dmi/id/product_name", "20XW \n");
    root.write("etc/os-release", "ID=arch\n");
    setenv("LC_MESSAGES", "sr_RS.UTF-8@latin", 1);
    CHECK(MachineFacts::read(root.path()) ==
          MachineFacts{.osVersion = "arch", .deviceModel = "LENOVO 20XW", .language = "sr-RS"});
}
