#include "platform/cloud/FIRApp.h"

#include <utility>

namespace skyflare {

FIRApp::FIRApp(std::vector<std::filesystem::path> folders, Console &console)
    : folders_(std::move(folders)), console_(console)
{
}

void FIRApp::registerComponent(Component start)
{
    if (options_)
        start(*options_);
    else
        waiting_.push_back(std::move(start));
}

void FIRApp::configure()
{
    if (options_)
        return;
    options_ = FIROptions::load(folders_, console_);
    for (const Component &start : std::exchange(waiting_, {}))
        start(*options_);
}

} // namespace skyflare
