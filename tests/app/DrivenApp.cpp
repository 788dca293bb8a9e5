#include "tests/app/DrivenApp.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace skyflare {

namespace {

std::vector<std::string> commandLine(const AppSetup &setup)
{
    std::vector<std::string> command{"/usr/bin/env", "-u", "DBUS_SESSION_BUS_ADDRESS", "-u", "DISPLAY"};
    const auto append = [&command](const std::vector<std::string> &more) {
        command.insert(command.end(), more.begin(), more.end());
    };
    append({"QT_QPA_PLATFORM=offscreen", "QT_QUICK_BACKEND=software", "LC_ALL=C.UTF-8", "LANGUAGE=en",
            "TZ=UTC", "XDG_RUNTIME_DIR=" + setup.folder.string(),
            "DBUS_SYSTEM_BUS_ADDRESS=unix:path=" + (setup.folder / "no-bus").string()});
    append(setup.environment);
    append({setup.program, "--data-dir", setup.folder.string()});
    append(setup.options);
    return command;
}

} // namespace

DrivenApp::DrivenApp(const AppSetup &setup) : process_(commandLine(setup), ChildProcess::Input::Written) {}

std::string DrivenApp::ask(const std::string &command)
{
    const std::string answered = "driver: ok";
    process_.writeLine(command);
    while (const auto line = process_.readLine()) {
        if (line->starts_with(answered))
            return line->substr(std::min(line->size(), answered.size() + 1));
        if (line->starts_with("driver: "))
            throw std::runtime_error(command + ": " + *line);
        lines_.push_back(*line);
    }
    process_.kill();
    throw std::runtime_error(command + ": the app has ended; " + process_.errors());
}

void DrivenApp::waitForLine(const std::string &start, std::size_t lines)
{
    while (count(start) < lines) {
        const auto line = process_.readLine();
        if (!line)
            throw std::runtime_error("the app has ended, and has not printed " + start);
        lines_.push_back(*line);
    }
}

std::string DrivenApp::waitForOneOf(const std::vector<std::string> &starts, std::size_t from)
{
    for (std::size_t number = from;; ++number) {
        if (number == lines_.size()) {
            auto line = process_.readLine();
            if (!line)
                throw std::runtime_error("the app has ended, and has not printed " + starts.front());
            lines_.push_back(*std::move(line));
        }
        const auto found = std::ranges::find_if(
            starts, [&](const std::string &start) { return lines_[number].starts_with(start); });
        if (found != starts.end())
            return *found;
    }
}

int DrivenApp::wait()
{
    std::ranges::move(process_.readAll(), std::back_inserter(lines_));
    return process_.wait();
}

std::size_t DrivenApp::count(const std::string &start) const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(lines_, [&](const std::string &line) { return line.starts_with(start); }));
}

std::string DrivenApp::complaints() const
{
    std::istringstream errors(process_.errors());
    std::string others;
    for (std::string line; std::getline(errors, line);) {
        const auto says = [&line](const char *words) { return line.find(words) != line.npos; };
        if (!says("There is no session bus") && !says("There is no system bus") &&
            !says("Events left behind at the end"))
            others += line + '\n';
    }
    return others;
}

} // namespace skyflare
