#include "platform/base/StandardConsole.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/UserDirectories.h"

#include <doctest/doctest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

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

TEST_CASE("the machine's clocks are two")
{
    const SystemClock clock;
    CHECK(clock.secondsSince1970() > 1'700'000'000.0);
    CHECK(clock.secondsOfUptime() > 0);
    CHECK(clock.secondsOfUptime() < 1'700'000'000.0);
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
