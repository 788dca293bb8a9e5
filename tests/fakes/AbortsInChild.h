#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace skyflare {

/// Runs `work` in a child process and tells whether that called abort(). Where no other thread runs.
template <typename Work> bool abortsInChild(const Work &work)
{
    std::fflush(nullptr); // or the child prints again what waits
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGABRT, SIG_DFL); // not the test runner's own handler
        work();
        _exit(0);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFSIGNALED(status) &&
           WTERMSIG(status) == SIGABRT;
}

} // namespace skyflare
