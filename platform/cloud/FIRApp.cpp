#include "platform/cloud/FIRApp.h"

#include <utility>

namespace skyflare {

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
    options_ = given_;
    for (const Component &start : std::exchange(waiting_, {}))
        start(*options_);
}

} // namespace skyflare
