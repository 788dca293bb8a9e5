#include "platform/base/MainLoop.h"

#include "platform/base/AsioQueueCore.h"

#include <cstdio>
#include <cstdlib>

namespace skyflare {

MainLoop::MainLoop(std::string label)
    : SerialQueue(std::move(label)), core_(std::make_shared<AsioQueueCore>(this->label()))
{
}

MainLoop::~MainLoop()
{
    core_->close();
    core_->discard();
}

void MainLoop::run()
{
    assertOn(*this);
    core_->run();
}

void MainLoop::quit()
{
    core_->close();
}

void MainLoop::async(Work work)
{
    core_->async(std::move(work));
}

bool MainLoop::sync(const Work &work)
{
    if (isCurrent()) {
        std::fprintf(stderr, "sync to %s from its own thread would never end\n", label().c_str());
        std::abort();
    }
    return core_->sync(work);
}

void MainLoop::asyncAfter(std::chrono::nanoseconds delay, Work work)
{
    core_->asyncAfter(delay, std::move(work));
}

bool MainLoop::isCurrent() const
{
    return std::this_thread::get_id() == owner_;
}

} // namespace skyflare
