#include "tests/fakes/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <tuple>
#include <utility>

namespace skyflare {

ChildProcess::ChildProcess(const std::vector<std::string> &command, Input input)
{
    int pipeEnds[2];
    int inputEnds[2] = {-1, STDIN_FILENO};
    errors_ = memfd_create("errors", MFD_CLOEXEC);
    if (pipe2(pipeEnds, O_CLOEXEC) != 0 || errors_ < 0 ||
        (input == Input::Written && socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, inputEnds) != 0))
        std::abort();
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);

    const pid_t test = getpid();
    pid_ = fork();
    if (pid_ < 0)
        std::abort();
    if (pid_ == 0) {
        dup2(inputEnds[1], STDIN_FILENO);
        dup2(pipeEnds[1], STDOUT_FILENO);
        dup2(errors_, STDERR_FILENO);
        // A connection of the test's that is reset is reset, whoever has been started meanwhile.
        close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        // It goes with the test, also when that crashes.
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != test)
            _exit(127);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    output_ = pipeEnds[0];
    if (input == Input::Written)
        close(inputEnds[1]);
    input_ = inputEnds[0];
}

ChildProcess::~ChildProcess()
{
    kill();
    if (input_ >= 0)
        close(input_);
    close(output_);
    close(errors_);
}

void ChildProcess::writeLine(const std::string &line) const
{
    const std::string whole = line + '\n';
    std::ignore = send(input_, whole.data(), whole.size(), MSG_NOSIGNAL); // a line fits a socket's room
}

std::optional<std::string> ChildProcess::readLine()
{
    for (;;) {
        if (const auto end = pending_.find('\n'); end != std::string::npos) {
            std::string line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return line;
        }
        char block[4096];
        const ssize_t count = read(output_, block, sizeof block);
        if (count <= 0)
            return pending_.empty() ? std::nullopt : std::optional(std::exchange(pending_, {}));
        pending_.append(block, static_cast<std::size_t>(count));
    }
}

std::vector<std::string> ChildProcess::readAll()
{
    std::vector<std::string> lines;
    while (auto line = readLine())
        lines.push_back(std::move(*line));
    return lines;
}

void ChildProcess::signal(int number) const
{
    if (pid_ > 0) // else it would go to everybody
        ::kill(pid_, number);
}

void ChildProcess::kill()
{
    if (pid_ <= 0)
        return;
    signal(SIGKILL);
    wait();
}

bool ChildProcess::waitForOutput(std::chrono::nanoseconds atMost) const
{
    if (pending_.find('\n') != pending_.npos)
        return true;
    pollfd watched{output_, POLLIN, 0};
    const timespec limit{atMost / std::chrono::seconds(1), (atMost % std::chrono::seconds(1)).count()};
    return ppoll(&watched, 1, &limit, nullptr) > 0;
}

int ChildProcess::wait()
{
    int status = 0;
    if (waitpid(std::exchange(pid_, -1), &status, 0) < 0)
        std::abort();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ChildProcess::errors() const
{
    std::string text(static_cast<std::size_t>(lseek(errors_, 0, SEEK_END)), '\0');
    const ssize_t count = pread(errors_, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

int runProgram(const std::vector<std::string> &command)
{
    ChildProcess process(command);
    process.readAll();
    return process.wait();
}

} // namespace skyflare
