#include "platform/image/AreaAverage.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/RedSum.h"

#include <algorithm>

namespace skyflare {
namespace {

std::uint8_t roundedMean(std::uint64_t sum, std::uint64_t pixels)
{
    return static_cast<std::uint8_t>((2 * sum + pixels) / (2 * pixels));
}

std::uint64_t area(int width, int height)
{
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
}

bool hasAllPlanes(const VideoFrame &frame)
{
    const std::size_t planes = frame.format == PixelFormat::I420   ? 3
                               : frame.format == PixelFormat::NV12 ? 2
                                                                   : 1;
    return std::all_of(frame.planes.begin(), frame.planes.begin() + planes,
                       [](const VideoFrame::Plane &plane) { return plane.data != nullptr; });
}

std::optional<std::uint8_t> averageRedOfJpeg(const VideoFrame &frame)
{
    const std::span encoded(frame.planes[0].data, static_cast<std::size_t>(frame.planes[0].stride));
    auto decoder = JpegDecoder::open(encoded, {.chroma = JpegDecoder::Chroma::Replicated});
    if (!decoder)
        return std::nullopt;
    const int width = (*decoder)->width();
    const int height = (*decoder)->height();
    Bytes row(static_cast<std::size_t>(width) * 3);
    VideoFrame rowAsFrame{.format = PixelFormat::RGB, .width = width, .height = 1};
    rowAsFrame.planes[0] = {row.data(), static_cast<std::ptrdiff_t>(row.size())};
    std::uint64_t sum = 0;
    for (int y = 0; y < height; ++y) {
        if (!(*decoder)->readRow(row))
            return std::nullopt;
        sum += redSum(rowAsFrame);
    }
    return roundedMean(sum, area(width, height));
}

} // namespace

std::optional<std::uint8_t> averageRed(const VideoFrame &frame)
{
    if (!frame.hasImageBuffer() || !hasAllPlanes(frame))
        return std::nullopt;
    if (frame.format == PixelFormat::Jpeg)
        return averageRedOfJpeg(frame);
    return roundedMean(redSum(frame), area(frame.width, frame.height));
}

} // namespace skyflare
