#include "platform/image/FrameConversion.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/RgbRow.h"

#include <algorithm>

namespace skyflare {
namespace {

Error noPicture()
{
    return {"frame", 0, "the frame holds no picture"};
}

const std::uint8_t *convertYcbcr(const VideoFrame &frame, const YcbcrConversion &conversion, int y,
                                 std::span<std::uint8_t> rgb)
{
    convertYcbcrRow(frame, conversion, y, rgb);
    return rgb.data();
}

const std::uint8_t *rowOf(const VideoFrame &frame, int y)
{
    return frame.planes[0].data + frame.planes[0].stride * y;
}

template <std::size_t red, std::size_t blue> const std::uint8_t *
pickRgb(const VideoFrame &frame, const YcbcrConversion & /*none*/, int y, std::span<std::uint8_t> rgb)
{
    const std::uint8_t *from = rowOf(frame, y);
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3, from += 4) {
        rgb[i] = from[red];
        rgb[i + 1] = from[1];
        rgb[i + 2] = from[blue];
    }
    return rgb.data();
}

const std::uint8_t *rgbAsItIs(const VideoFrame &frame, const YcbcrConversion & /*none*/, int y,
                              std::span<std::uint8_t> /*rgb*/)
{
    return rowOf(frame, y);
}

const std::uint8_t *convertGray(const VideoFrame &frame, const YcbcrConversion &conversion, int y,
                                std::span<std::uint8_t> rgb)
{
    const YcbcrConversion k = conversion;
    const std::uint8_t *from = rowOf(frame, y);
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3, ++from)
        rgb[i] = rgb[i + 1] = rgb[i + 2] =
            static_cast<std::uint8_t>(YcbcrConversion::channel(k.lumaTerm(*from)));
    return rgb.data();
}

struct FormatRow {
    FrameRows::Converter converter = nullptr;
    int planes = 1; ///< that must be there
};

FormatRow formatRow(PixelFormat format)
{
    switch (format) {
    case PixelFormat::NV12:
        return {&convertYcbcr, 2};
    case PixelFormat::I420:
        return {&convertYcbcr, 3};
    case PixelFormat::YUY2:
    case PixelFormat::UYVY:
        return {&convertYcbcr};
    case PixelFormat::RGBx:
        return {&pickRgb<0, 2>};
    case PixelFormat::BGRx:
        return {&pickRgb<2, 0>};
    case PixelFormat::RGB:
        return {&rgbAsItIs};
    case PixelFormat::GRAY8:
        return {&convertGray};
    case PixelFormat::Jpeg:
    case PixelFormat::Unknown:
        break;
    }
    return {};
}

Result<PixelBuffer> decodeJpeg(const VideoFrame &frame)
{
    const std::span encoded(frame.planes[0].data, static_cast<std::size_t>(frame.planes[0].stride));
    auto decoder = JpegDecoder::open(encoded, {});
    if (!decoder)
        return decoder.error();
    return decodeAllRows(**decoder);
}

} // namespace

Result<FrameRows> FrameRows::of(const VideoFrame &frame)
{
    const FormatRow format = formatRow(frame.format);
    if (!frame.hasImageBuffer() || !format.converter)
        return noPicture();
    for (std::size_t plane = 0; plane < static_cast<std::size_t>(format.planes); ++plane) {
        if (!frame.planes[plane].data)
            return noPicture();
    }
    return FrameRows(frame, format.converter);
}

FrameRows::FrameRows(const VideoFrame &frame, Converter converter)
    : frame_(&frame), converter_(converter), conversion_(ycbcrConversion(frame.matrix, frame.range))
{
}

Result<PixelBuffer> convertToRgb(const VideoFrame &frame)
{
    if (frame.format == PixelFormat::Jpeg && frame.hasImageBuffer())
        return decodeJpeg(frame);
    const auto rows = FrameRows::of(frame);
    if (!rows)
        return rows.error();
    PixelBuffer pixels = PixelBuffer::ofSize(frame.width, frame.height);
    for (int y = 0; y < frame.height; ++y) {
        const auto into = pixels.row(y);
        if (const std::uint8_t *row = rows->row(y, into); row != into.data())
            std::copy_n(row, into.size(), into.begin());
    }
    return pixels;
}

} // namespace skyflare
