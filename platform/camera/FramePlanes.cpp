#include "platform/camera/FramePlanes.h"

#include "platform/base/Bytes.h"

#include <algorithm>

namespace skyflare {

namespace {

/// One sample of a plane: the pixels that it stands for, and its bytes.
struct SampleShape {
    int across = 1;
    int down = 1;
    int bytes = 0; ///< 0: there is no such plane
};

struct FormatRow {
    PixelFormat format;
    std::array<SampleShape, 3> planes;
};

constexpr std::array<FormatRow, 8> formatRows{{
    {PixelFormat::NV12, {{{1, 1, 1}, {2, 2, 2}, {}}}},
    {PixelFormat::I420, {{{1, 1, 1}, {2, 2, 1}, {2, 2, 1}}}},
    {PixelFormat::YUY2, {{{2, 1, 4}, {}, {}}}},
    {PixelFormat::UYVY, {{{2, 1, 4}, {}, {}}}},
    {PixelFormat::RGBx, {{{1, 1, 4}, {}, {}}}},
    {PixelFormat::BGRx, {{{1, 1, 4}, {}, {}}}},
    {PixelFormat::RGB, {{{1, 1, 3}, {}, {}}}},
    {PixelFormat::GRAY8, {{{1, 1, 1}, {}, {}}}},
}};

std::array<SampleShape, 3> samplesOf(PixelFormat format)
{
    const auto *row =
        std::find_if(formatRows.begin(), formatRows.end(),
                     [format](const FormatRow &candidate) { return candidate.format == format; });
    return row == formatRows.end() ? std::array<SampleShape, 3>{} : row->planes;
}

/// Cuts a stretch down to 0…`whole`, its begin moved up to a multiple of `step`.
void limit(std::int64_t &begin, std::int64_t &length, std::int64_t whole, std::int64_t step)
{
    const std::int64_t end = std::min(begin + length, whole);
    begin = (std::max<std::int64_t>(begin, 0) + step - 1) / step * step;
    length = std::max<std::int64_t>(end - begin, 0);
}

std::size_t bytesOf(const VideoFrame &frame, const std::array<PlaneShape, 3> &shapes)
{
    if (frame.format == PixelFormat::Jpeg)
        return static_cast<std::size_t>(frame.planes[0].stride);
    std::size_t bytes = 0;
    for (const PlaneShape &shape : shapes)
        bytes += static_cast<std::size_t>(shape.rowBytes * shape.rows);
    return bytes;
}

} // namespace

std::array<PlaneShape, 3> planeShapes(PixelFormat format, int width, int height)
{
    const auto samples = samplesOf(format);
    std::array<PlaneShape, 3> shapes{};
    for (std::size_t plane = 0; plane < shapes.size(); ++plane) {
        const SampleShape &sample = samples[plane];
        const std::ptrdiff_t perRow = (std::ptrdiff_t{width} + sample.across - 1) / sample.across;
        if (sample.bytes > 0)
            shapes[plane] = {perRow * sample.bytes, (height + sample.down - 1) / sample.down};
    }
    return shapes;
}

VideoFrame cropped(VideoFrame frame, PictureRegion region)
{
    const auto samples = samplesOf(frame.format);
    int across = 1;
    int down = 1;
    for (const SampleShape &sample : samples) {
        across = std::max(across, sample.across);
        down = std::max(down, sample.down);
    }
    limit(region.x, region.width, frame.width, across);
    limit(region.y, region.height, frame.height, down);
    if (region.width == 0 || region.height == 0)
        return {};
    for (std::size_t plane = 0; plane < samples.size(); ++plane) {
        VideoFrame::Plane &rows = frame.planes[plane];
        if (samples[plane].bytes > 0)
            rows.data += region.y / samples[plane].down * rows.stride +
                         region.x / samples[plane].across * samples[plane].bytes;
    }
    frame.width = static_cast<int>(region.width);
    frame.height = static_cast<int>(region.height);
    return frame;
}

VideoFrame copied(const VideoFrame &frame)
{
    const auto shapes = planeShapes(frame.format, frame.width, frame.height);
    const auto bytes = std::make_shared<Bytes>();
    // Reserved, not resized: a large picture need not be written twice.
    bytes->reserve(bytesOf(frame, shapes));
    VideoFrame copy = frame;
    if (frame.format == PixelFormat::Jpeg)
        bytes->assign(frame.planes[0].data, frame.planes[0].data + frame.planes[0].stride);
    copy.planes[0].data = bytes->data();
    for (std::size_t plane = 0; plane < shapes.size(); ++plane) {
        const PlaneShape &shape = shapes[plane];
        if (shape.rows == 0)
            continue;
        copy.planes[plane] = {bytes->data() + bytes->size(), shape.rowBytes};
        for (int row = 0; row < shape.rows; ++row) {
            const std::uint8_t *from = frame.planes[plane].data + row * frame.planes[plane].stride;
            bytes->insert(bytes->end(), from, from + shape.rowBytes);
        }
    }
    copy.owner = bytes;
    return copy;
}

} // namespace skyflare
