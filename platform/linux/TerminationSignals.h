#pragma once

#include <functional>
#include <thread>

namespace skyflare {

/// Ctrl-C and its kin (SIGINT, SIGTERM, SIGHUP) as a call instead of a sudden end.
///
/// The first one calls the handler, on a thread of its own; a second one ends the process at once, for
/// whoever does not want to wait.
/// Threads: made on main before any other thread, which all inherit the blocked signals. One a process.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> handler);
    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;
    ~TerminationSignals();

private:
    std::thread thread_;
};

} // namespace skyflare
