#include "watch/JsonReport.h"

#include "platform/base/Text.h"

#include <nlohmann/json.hpp>

#include <charconv>

namespace skyflare {
namespace {

using Object = nlohmann::ordered_json;

void write(std::FILE *stream, const Object &object)
{
    // A camera may have any bytes as its name: what is no UTF-8 is replaced, not refused.
    const std::string line = object.dump(-1, ' ', false, Object::error_handler_t::replace) + "\n";
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

double seconds(std::chrono::nanoseconds time)
{
    return std::chrono::duration<double>(std::chrono::duration_cast<std::chrono::microseconds>(time)).count();
}

/// The double that prints with the float's own digits: 0.42, not 0.41999998688697815.
double asDecimal(float number)
{
    const std::string digits = shortestDecimal(number);
    double value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

} // namespace

void JsonReport::camera(const CaptureDevice &device)
{
    for (const CaptureFormat &format : device.formats()) {
        write(stream_, {{"type", "camera"},
                        {"camera", device.localizedName()},
                        {"position", nameOf(device.position())},
                        {"width", format.width},
                        {"height", format.height},
                        {"fps", format.framesPerSecond}});
    }
}

void JsonReport::started(const SessionEvent &event)
{
    write(stream_, {{"type", "started"},
                    {"camera", event.device},
                    {"width", event.format.width},
                    {"height", event.format.height},
                    {"fps", event.format.framesPerSecond}});
}

void JsonReport::photo(const Photo &photo)
{
    write(stream_, {{"type", "photo"},
                    {"uuid", photo.uuid},
                    {"time_s", seconds(photo.streamTime)},
                    {"difference", asDecimal(photo.difference)},
                    {"total", photo.total}});
}

void JsonReport::lost(const SessionEvent &event)
{
    write(stream_, {{"type", "lost"}, {"camera", event.device}});
}

void JsonReport::summary(const Summary &summary)
{
    write(stream_, {{"type", "summary"},
                    {"frames", summary.frames.delivered},
                    {"dropped", summary.frames.dropped},
                    {"triggers", summary.triggers},
                    {"photos", summary.photos},
                    {"film_s", summary.filmSeconds},
                    {"wall_s", summary.wallSeconds}});
}

} // namespace skyflare
