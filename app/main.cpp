#include "app/AppOptions.h"
#include "app/BackgroundProgram.h"
#include "app/Program.h"

#include <cstdio>
#include <cstdlib>
#include <span>

namespace skyflare {
namespace {

constexpr int done = 0;
constexpr int couldNotStart = 1;
constexpr int wrongUsage = 2;

int start(int argc, char **argv)
{
    const auto options = AppOptions::parse(
        std::span<const char *const>(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0)));
    if (!options) {
        std::fprintf(stderr, "skyflare: %s\n", options.error().message.c_str());
        return wrongUsage;
    }
    if (options->help)
        return std::fputs(AppOptions::usage().c_str(), stdout) < 0 ? couldNotStart : done;
    if (options->version)
        return std::puts("skyflare " SKYFLARE_VERSION) < 0 ? couldNotStart : done;
    if (options->background && runInBackground(*options) == BackgroundPush::End::Done)
        return done;
    int programAlone = 1; // the options are ours; Qt takes its own from the environment
    return Program(*options, programAlone, argv).run();
}

} // namespace
} // namespace skyflare

int main(int argc, char **argv)
{
    setenv("LIBCAMERA_LOG_LEVELS", "*:ERROR", 0); // it reports its every start otherwise; before any thread
    return skyflare::start(argc, argv);
}
