#include "platform/image/FrameConversion.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/YcbcrConversion.h"

namespace skyflare {
namespace {

Error noPicture()
{
    return {"frame", 0, "the frame holds no picture"};
}

template <YcbcrLayout layout>
void convertRow(const YcbcrRow &row, std::size_t width, const YcbcrConversion &conversion, std::uint8_t *rgb)
{
    const YcbcrConversion k = conversion; // a copy, which no pointer can alias
    const auto put = [rgb](std::size_t x, int luma, int red, int green, int blue) {
        rgb[3 * x] = static_cast<std::uint8_t>(YcbcrConversion::channel(luma + red));
        rgb[3 * x + 1] = static_cast<std::uint8_t>(YcbcrConversion::channel(luma + green));
        rgb[3 * x + 2] = static_cast<std::uint8_t>(YcbcrConversion::channel(luma + blue));
    };
    for (std::size_t x = 0; x < width; x += 2) {
        const int cb = row.cb[x / 2 * layout.chromaStep];
        const int cr = row.cr[x / 2 * layout.chromaStep];
        const int red = YcbcrConversion::chromaTerm(cr, k.redPerCr);
        const int green =
            YcbcrConversion::chromaTerm(cb, k.greenPerCb) + YcbcrConversion::chromaTerm(cr, k.greenPerCr);
        const int blue = YcbcrConversion::chromaTerm(cb, k.bluePerCb);
        put(x, k.lumaTerm(row.y[x * layout.lumaStep]), red, green, blue);
        if (x + 1 < width)
            put(x + 1, k.lumaTerm(row.y[(x + 1) * layout.lumaStep]), red, green, blue);
    }
}

template <typename RowFunction> PixelBuffer overRows(const VideoFrame &frame, RowFunction rowFunction)
{
    PixelBuffer pixels = PixelBuffer::ofSize(frame.width, frame.height);
    for (int y = 0; y < frame.height; ++y)
        rowFunction(y, pixels.row(y));
    return pixels;
}

template <YcbcrLayout layout> Result<PixelBuffer> convertYcbcr(const VideoFrame &frame)
{
    if (!frame.planes[layout.cbPlane].data || !frame.planes[layout.crPlane].data)
        return noPicture();
    const YcbcrConversion conversion = ycbcrConversion(frame.matrix, frame.range);
    return overRows(frame, [&](int y, std::span<std::uint8_t> rgb) {
        convertRow<layout>(ycbcrRow<layout>(frame, y), rgb.size() / 3, conversion, rgb.data());
    });
}

template <std::size_t step>
PixelBuffer pickRgb(const VideoFrame &frame, std::size_t red, std::size_t green, std::size_t blue)
{
    return overRows(frame, [&](int y, std::span<std::uint8_t> rgb) {
        const std::uint8_t *from = frame.planes[0].data + frame.planes[0].stride * y;
        for (std::size_t i = 0; i + 2 < rgb.size(); i += 3, from += step) {
            rgb[i] = from[red];
            rgb[i + 1] = from[green];
            rgb[i + 2] = from[blue];
        }
    });
}

PixelBuffer convertGray(const VideoFrame &frame)
{
    const YcbcrConversion k = ycbcrConversion(frame.matrix, frame.range);
    return overRows(frame, [&](int y, std::span<std::uint8_t> rgb) {
        const std::uint8_t *from = frame.planes[0].data + frame.planes[0].stride * y;
        for (std::size_t i = 0; i + 2 < rgb.size(); i += 3, ++from)
            rgb[i] = rgb[i + 1] = rgb[i + 2] =
                static_cast<std::uint8_t>(YcbcrConversion::channel(k.lumaTerm(*from)));
    });
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

Result<PixelBuffer> convertToRgb(const VideoFrame &frame)
{
    if (!frame.hasImageBuffer())
        return noPicture();
    switch (frame.format) {
    case PixelFormat::NV12:
        return convertYcbcr<nv12Layout>(frame);
    case PixelFormat::I420:
        return convertYcbcr<i420Layout>(frame);
    case PixelFormat::YUY2:
        return convertYcbcr<yuy2Layout>(frame);
    case PixelFormat::UYVY:
        return convertYcbcr<uyvyLayout>(frame);
    case PixelFormat::RGBx:
        return pickRgb<4>(frame, 0, 1, 2);
    case PixelFormat::BGRx:
        return pickRgb<4>(frame, 2, 1, 0);
    case PixelFormat::RGB:
        return pickRgb<3>(frame, 0, 1, 2);
    case PixelFormat::GRAY8:
        return convertGray(frame);
    case PixelFormat::Jpeg:
        return decodeJpeg(frame);
    case PixelFormat::Unknown:
        break;
    }
    return noPicture();
}

} // namespace skyflare
