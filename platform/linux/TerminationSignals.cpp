#include "platform/linux/TerminationSignals.h"

#include <unistd.h>

#include <csignal>

namespace skyflare {
namespace {

/// Ours alone: tells the thread that it is no longer needed.
const int noMore = SIGRTMIN;

sigset_t watchedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, noMore})
        sigaddset(&signals, number);
    return signals;
}

void serve(const std::function<void()> &handler)
{
    const sigset_t signals = watchedSignals();
    for (bool first = true;; first = false) {
        int number = 0;
        if (sigwait(&signals, &number) != 0 || number == noMore)
            return;
        if (!first)
            _exit(128 + number);
        handler();
    }
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> handler)
{
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    thread_ = std::thread([handler = std::move(handler)] { serve(handler); });
}

TerminationSignals::~TerminationSignals()
{
    pthread_kill(thread_.native_handle(), noMore);
    thread_.join();
}

} // namespace skyflare
