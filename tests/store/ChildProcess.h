#pragma once

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// A program that the test starts, and what it prints. Killed when this ends.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> command)
    {
        int ends[2];
        if (pipe(ends) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::vector<char *> arguments(command.size() + 1, nullptr);
        std::transform(command.begin(), command.end(), arguments.begin(),
                       [](std::string &each) { return each.data(); });
        if (posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
            process_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = ends[0];
    }
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    ~ChildProcess()
    {
        kill();
        close(output_);
    }

    /// The next line; nothing once the output has ended, or if none comes within a minute.
    std::optional<std::string> readLine()
    {
        while (true) {
            if (const auto end = read_.find('\n'); end != std::string::npos) {
                std::string line = read_.substr(0, end);
                read_.erase(0, end + 1);
                return line;
            }
            char some[4096];
            const ssize_t got =
                waitForOutput(std::chrono::minutes(1)) ? ::read(output_, some, sizeof some) : 0;
            if (got <= 0)
                return {};
            read_.append(some, static_cast<std::size_t>(got));
        }
    }

    std::vector<std::string> readAll()
    {
        std::vector<std::string> lines;
        while (auto line = readLine())
            lines.push_back(std::move(*line));
        return lines;
    }

    bool waitForOutput(std::chrono::nanoseconds atMost) const
    {
        pollfd watched{output_, POLLIN, 0};
        const timespec limit{atMost / std::chrono::seconds(1), (atMost % std::chrono::seconds(1)).count()};
        return ppoll(&watched, 1, &limit, nullptr) > 0;
    }

    /// Ends it at once, whatever it is doing.
    void kill()
    {
        if (process_ > 0)
            ::kill(process_, SIGKILL);
        wait();
    }

    /// Waits for its end. @return its exit status, -1 if a signal ended it.
    int wait()
    {
        if (process_ <= 0)
            return -1;
        int status = 0;
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR)
            ;
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_ = -1;
    int output_ = -1;
    std::string read_;
};

} // namespace skyflare
