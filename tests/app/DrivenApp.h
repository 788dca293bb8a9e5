#pragma once

#include "tests/fakes/ChildProcess.h"

#include <filesystem>
#include <string>
#include <vector>

namespace skyflare {

/// Which app a test runs.
struct AppSetup {
    std::filesystem::path folder; ///< its files
    std::vector<std::string> options = {"--camera", "simulated"};
    std::vector<std::string> environment =
        {}; ///< NAME=VALUE, beside what all tests have; then what starts it
    std::string program = APP_DRIVER;
};

/// The whole app in a process of its own, used by clicks and keys. Without a display and a session bus,
/// unless the environment says otherwise; in English.
///
/// Every call waits until what it says can be done, and throws where it cannot.
class DrivenApp {
public:
    explicit DrivenApp(const AppSetup &setup);

    /// @param name  an item's object name or accessible name; the second so named from the top is "NAME#2"
    void click(const std::string &name) { ask("click " + name); }
    /// @param keys  such as "Space" or "Ctrl+Q"
    void press(const std::string &keys) { ask("press " + keys); }
    /// As the title bar's button does.
    void close() { ask("close"); }

    void see(const std::string &name) { ask("see " + name); }
    void miss(const std::string &name) { ask("miss " + name); }
    std::string read(const std::string &name) { return readUntil(name, ".*"); }
    /// @param pattern  of the whole text; a regular expression
    std::string readUntil(const std::string &name, const std::string &pattern)
    {
        return ask("until " + name + " = " + pattern);
    }
    /// Waits until its picture changes.
    void seeChange(const std::string &name) { ask("change " + name); }
    /// Waits until it has the focus.
    void seeFocus(const std::string &name) { ask("focus " + name); }
    std::string graphics() { return ask("graphics"); }

    /// Waits until it has printed that many lines that begin so.
    void waitForLine(const std::string &start, std::size_t lines = 1);
    /// Waits for a line that begins like one of these, from that line on. @return how it begins
    std::string waitForOneOf(const std::vector<std::string> &starts, std::size_t from);
    /// Waits for the end. @return the exit status
    int wait();
    [[nodiscard]] ChildProcess &process() { return process_; }
    /// What has been printed until the last answer, or the end.
    [[nodiscard]] const std::vector<std::string> &lines() const { return lines_; }
    /// How many of them begin so.
    [[nodiscard]] std::size_t count(const std::string &start) const;
    /// What it has written to standard error, after its end; but for that there is no bus, which is so
    /// here, and that the engine had no time to store its last events, as on a machine that does other
    /// things.
    [[nodiscard]] std::string complaints() const;

private:
    ChildProcess process_;
    std::vector<std::string> lines_;

    std::string ask(const std::string &command);
};

} // namespace skyflare
