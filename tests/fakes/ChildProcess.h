#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// A program that a test runs: its standard output line by line, its standard error whole.
///
/// It ends, at the latest, with the thread that started it.
class ChildProcess {
public:
    enum class Input { OfTest, Written };

    /// Aborts the test where the program cannot be started.
    /// @param input  where its standard input comes from: that of the test, or writeLine()
    explicit ChildProcess(const std::vector<std::string> &command, Input input = Input::OfTest);
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    /// Kills what still runs.
    ~ChildProcess();

    /// Hands it a line; one that has ended gets none.
    void writeLine(const std::string &line) const;

    /// The next line of standard output, waited for; nothing at its end.
    std::optional<std::string> readLine();
    std::vector<std::string> readAll();
    /// Whether output, or its end, is there within that time.
    bool waitForOutput(std::chrono::nanoseconds atMost) const;

    [[nodiscard]] pid_t pid() const { return pid_; }
    void signal(int number) const;
    /// Ends it at once, whatever it is doing.
    void kill();

    /// Waits for the end. @return the exit status, or minus the signal that killed it
    int wait();

    /// All of standard error; call after wait().
    [[nodiscard]] std::string errors() const;

private:
    pid_t pid_ = -1;
    int input_ = -1; // a socket: writing to one that nobody reads is no signal
    int output_ = -1;
    int errors_ = -1; // a file without a name
    std::string pending_;
};

/// Runs a program to its end. @return its exit status
int runProgram(const std::vector<std::string> &command);

} // namespace skyflare
