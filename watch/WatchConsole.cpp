#include "watch/WatchConsole.h"

namespace skyflare {
namespace {

constexpr std::string_view eraseLine = "\r\033[K"; // ECMA-48: erase in line

void put(std::FILE *stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

} // namespace

void WatchConsole::setProgress(std::string line)
{
    const std::lock_guard lock(mutex_);
    if (!streams_.progress || line == progress_)
        return;
    progress_ = std::move(line);
    drawProgress();
}

void WatchConsole::write(std::FILE *stream, std::string_view line)
{
    if (!stream)
        return;
    const std::lock_guard lock(mutex_);
    if (!progress_.empty()) {
        put(streams_.progress, eraseLine);
        std::fflush(streams_.progress);
    }
    put(stream, line);
    put(stream, "\n");
    std::fflush(stream);
    if (!progress_.empty())
        drawProgress();
}

void WatchConsole::drawProgress()
{
    put(streams_.progress, eraseLine);
    put(streams_.progress, progress_);
    std::fflush(streams_.progress);
}

} // namespace skyflare
