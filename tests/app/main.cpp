// app_driver [OPTION]…: the app with the options of its own, and a Driver that uses it. The environment's
// DEPLOYMENT goes before the program's own folder, in place of the deployer's on this machine.

#include "app/AppOptions.h"
#include "app/Program.h"
#include "tests/app/Driver.h"

#include <cstdio>
#include <cstdlib>
#include <span>

int main(int argc, char **argv)
{
    using namespace skyflare;
    setenv("LIBCAMERA_LOG_LEVELS", "*:ERROR", 0);
    const char *const deployment = std::getenv("DEPLOYMENT");
    ProgramFiles files = ProgramFiles::standard();
    files.deployment.front() = deployment != nullptr ? deployment : "/nowhere";
    const auto options =
        AppOptions::parse(std::span<const char *const>(argv + 1, static_cast<std::size_t>(argc - 1)));
    if (!options) {
        std::fprintf(stderr, "app_driver: %s\n", options.error().message.c_str());
        return 2;
    }
    int programAlone = 1;
    Program program(*options, programAlone, argv, &findCamera, std::move(files));
    const Driver driver;
    return program.run();
}
