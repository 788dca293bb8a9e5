// app_driver [--deployment DIR] [OPTION]…: the app with the options of its own, and a Driver that uses it.
// DIR goes before the program's own folder, in place of the deployer's on this machine.

#include "app/AppOptions.h"
#include "app/Program.h"
#include "tests/app/Driver.h"

#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

namespace skyflare {
namespace {

constexpr int wrongUsage = 2;

int start(int argc, char **argv)
{
    std::span<const char *const> arguments(argv + 1, static_cast<std::size_t>(argc - 1));
    ProgramFiles files = ProgramFiles::standard();
    files.deployment.front() = "/nowhere";
    if (arguments.size() > 1 && arguments[0] == std::string_view("--deployment")) {
        files.deployment.front() = arguments[1];
        arguments = arguments.subspan(2);
    }
    const auto options = AppOptions::parse(arguments);
    if (!options) {
        std::fprintf(stderr, "app_driver: %s\n", options.error().message.c_str());
        return wrongUsage;
    }
    int programAlone = 1;
    Program program(*options, programAlone, argv, &findCamera, std::move(files));
    const Driver driver;
    return program.run();
}

} // namespace
} // namespace skyflare

int main(int argc, char **argv)
{
    setenv("LIBCAMERA_LOG_LEVELS", "*:ERROR", 0);
    return skyflare::start(argc, argv);
}
