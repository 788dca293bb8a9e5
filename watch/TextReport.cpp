#include "watch/TextReport.h"

#include <langinfo.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>

namespace skyflare {
namespace {

constexpr double secondsBetweenDrawings = 0.08;
constexpr int barCells = 32;

[[gnu::format(printf, 1, 2)]] std::string format(const char *pattern, ...)
{
    char text[256];
    std::va_list arguments;
    va_start(arguments, pattern);
    const int length = std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return {text, static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(sizeof text) - 1))};
}

double seconds(std::chrono::nanoseconds time)
{
    return std::chrono::duration<double>(time).count();
}

/// "1:02.5"
std::string clockText(double seconds)
{
    const auto tenths = static_cast<long long>(seconds * 10);
    return format("%lld:%02lld.%lld", tenths / 600, tenths / 10 % 60, tenths % 10);
}

std::string counted(std::int64_t count, const char *one, const char *many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace

TextReport::TextReport(WatchConsole &console, const Clock &clock, Source source)
    : console_(console),
      clock_(clock),
      source_(source),
      unicode_(std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0),
      startedAt_(clock.secondsOfUptime())
{
}

void TextReport::started(const SessionEvent &event)
{
    startedAt_ = clock_.secondsOfUptime();
    console_.printLine("Watching " + event.device +
                       format(", %d x %d pixels, %.4g frames a second.", event.format.width,
                              event.format.height, event.format.framesPerSecond));
}

void TextReport::lightPower(double brightness, std::chrono::nanoseconds streamTime)
{
    const double now = clock_.secondsOfUptime();
    if (!console_.showsProgress() || now - drawnAt_ < secondsBetweenDrawings)
        return;
    drawnAt_ = now;
    const std::string photos = counted(photos_, "photo", "photos");
    if (source_ == Source::Film) {
        const double speed = seconds(streamTime) / std::max(now - startedAt_, 0.001);
        console_.setProgress("  " + clockText(seconds(streamTime)) +
                             format(" of film, %.1f times its speed, ", speed) + photos);
    } else {
        console_.setProgress("  " + bar(brightness) + format(" %.2f  ", brightness) +
                             clockText(now - startedAt_) + "  " + photos);
    }
}

std::string TextReport::bar(double brightness) const
{
    const long lit = std::lround(std::clamp(brightness, 0.0, 1.0) * barCells);
    std::string cells;
    for (int cell = 0; cell < barCells; ++cell)
        cells += cell < lit ? (unicode_ ? "█" : "#") : (unicode_ ? "░" : "-");
    return cells;
}

void TextReport::status(const std::string &text)
{
    console_.printLine(text);
}

void TextReport::photo(const Photo &photo)
{
    ++photos_;
    console_.printLine("Photo at " + clockText(seconds(photo.streamTime)) +
                       format(", rise %.2f, ", static_cast<double>(photo.difference)) +
                       counted(photo.total, "photo", "photos") + " in the store.");
}

void TextReport::lost(const SessionEvent &event)
{
    console_.printLine("The camera " + event.device + " is gone. What was caught is kept.");
}

void TextReport::summary(const Summary &summary)
{
    console_.setProgress({});
    console_.printAnswer(counted(summary.frames.delivered, "frame", "frames") + " in " +
                         format("%.1f s", summary.wallSeconds) +
                         (source_ == Source::Film
                              ? format(" (%.1f s of film)", summary.filmSeconds)
                              : format(" (%lld dropped)", static_cast<long long>(summary.frames.dropped))) +
                         ", " + counted(summary.triggers, "burst", "bursts") + " seen, " +
                         counted(summary.photos, "photo", "photos") + " kept.");
}

} // namespace skyflare
