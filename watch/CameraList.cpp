#include "watch/CameraList.h"

#include "platform/base/Text.h"

#include <cstdio>

namespace skyflare {
namespace {

std::string sizeOf(const CaptureFormat &format)
{
    return std::to_string(format.width) + " x " + std::to_string(format.height);
}

/// "29.97", "30"; at most two decimals.
std::string decimal(double number)
{
    std::string digits(32, '\0');
    digits.resize(static_cast<std::size_t>(std::snprintf(digits.data(), digits.size(), "%.2f", number)));
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.'))
        digits.pop_back();
    return digits;
}

} // namespace

std::string cameraList(const std::vector<std::shared_ptr<const CaptureDevice>> &cameras)
{
    std::string text;
    for (const auto &camera : cameras) {
        text += validUtf8(camera->localizedName()) + "  " + std::string(nameOf(camera->position())) + "\n";
        std::string size;
        std::string rates;
        const auto endLine = [&] {
            if (!size.empty())
                text += "    " + size + (rates.empty() ? "" : "  " + rates + " frames a second") + "\n";
        };
        for (const CaptureFormat &format : camera->formats()) {
            if (sizeOf(format) != size) {
                endLine();
                size = sizeOf(format);
                rates.clear();
            }
            if (format.framesPerSecond > 0)
                rates += (rates.empty() ? "" : ", ") + decimal(format.framesPerSecond);
        }
        endLine();
    }
    return text;
}

} // namespace skyflare
