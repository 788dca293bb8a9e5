#include "platform/image/AreaAverage.h"

#include "platform/image/JpegDecoder.h"
#include "platform/image/YcbcrConversion.h"

namespace skyflare {
namespace {

/// The red of a whole picture, pixel by pixel.
struct RedSum {
    std::uint64_t sum = 0;
    std::uint64_t pixels = 0;

    [[nodiscard]] std::optional<std::uint8_t> mean() const
    {
        if (pixels == 0)
            return std::nullopt;
        return static_cast<std::uint8_t>((2 * sum + pixels) / (2 * pixels));
    }
};

// Row sums have 32 bits, which vectorises well and is enough for 16 million pixels a row.

template <YcbcrLayout layout>
std::uint32_t redOfRow(const YcbcrRow &row, std::size_t width, const YcbcrConversion &conversion)
{
    std::uint32_t sum = 0;
    const YcbcrConversion k = conversion; // a copy, which no pointer can alias
    const auto luma = [&](std::size_t x) { return k.lumaTerm(row.y[x * layout.lumaStep]); };
    const auto chroma = [&](std::size_t pair) {
        return YcbcrConversion::chromaTerm(row.cr[pair * layout.chromaStep], k.redPerCr);
    };
    for (std::size_t pair = 0; pair < width / 2; ++pair) {
        const int red = chroma(pair);
        sum += static_cast<std::uint32_t>(YcbcrConversion::channel(luma(2 * pair) + red) +
                                          YcbcrConversion::channel(luma(2 * pair + 1) + red));
    }
    if (width % 2 == 1)
        sum += static_cast<std::uint32_t>(YcbcrConversion::channel(luma(width - 1) + chroma(width / 2)));
    return sum;
}

template <std::size_t step> std::uint32_t sumOfRow(const std::uint8_t *first, std::size_t width)
{
    std::uint32_t sum = 0;
    for (std::size_t x = 0; x < width; ++x)
        sum += first[x * step];
    return sum;
}

template <typename RowFunction> RedSum overRows(const VideoFrame &frame, RowFunction rowFunction)
{
    const auto width = static_cast<std::size_t>(frame.width);
    RedSum red{0, width * static_cast<std::size_t>(frame.height)};
    for (int y = 0; y < frame.height; ++y)
        red.sum += rowFunction(y, width);
    return red;
}

template <YcbcrLayout layout> RedSum redOfYcbcr(const VideoFrame &frame)
{
    if (!frame.planes[layout.cbPlane].data || !frame.planes[layout.crPlane].data)
        return {};
    const YcbcrConversion conversion = ycbcrConversion(frame.matrix, frame.range);
    return overRows(frame, [&](int y, std::size_t width) {
        return redOfRow<layout>(ycbcrRow<layout>(frame, y), width, conversion);
    });
}

template <std::size_t step> RedSum redOfRgb(const VideoFrame &frame, std::size_t redOffset)
{
    return overRows(frame, [&](int y, std::size_t width) {
        return sumOfRow<step>(frame.planes[0].data + frame.planes[0].stride * y + redOffset, width);
    });
}

RedSum redOfGray(const VideoFrame &frame)
{
    const YcbcrConversion k = ycbcrConversion(frame.matrix, frame.range);
    return overRows(frame, [&](int y, std::size_t width) {
        const std::uint8_t *row = frame.planes[0].data + frame.planes[0].stride * y;
        std::uint32_t sum = 0;
        for (std::size_t x = 0; x < width; ++x)
            sum += static_cast<std::uint32_t>(YcbcrConversion::channel(k.lumaTerm(row[x])));
        return sum;
    });
}

RedSum redOfJpeg(const VideoFrame &frame)
{
    const std::span encoded(frame.planes[0].data, static_cast<std::size_t>(frame.planes[0].stride));
    auto decoder = JpegDecoder::open(encoded, {.chroma = JpegDecoder::Chroma::Replicated});
    if (!decoder)
        return {};
    const auto width = static_cast<std::size_t>((*decoder)->width());
    RedSum red{0, width * static_cast<std::size_t>((*decoder)->height())};
    Bytes row(width * 3);
    for (int y = 0; y < (*decoder)->height(); ++y) {
        if (!(*decoder)->readRow(row))
            return {};
        red.sum += sumOfRow<3>(row.data(), width);
    }
    return red;
}

RedSum redOf(const VideoFrame &frame)
{
    switch (frame.format) {
    case PixelFormat::NV12:
        return redOfYcbcr<nv12Layout>(frame);
    case PixelFormat::I420:
        return redOfYcbcr<i420Layout>(frame);
    case PixelFormat::YUY2:
        return redOfYcbcr<yuy2Layout>(frame);
    case PixelFormat::UYVY:
        return redOfYcbcr<uyvyLayout>(frame);
    case PixelFormat::RGBx:
        return redOfRgb<4>(frame, 0);
    case PixelFormat::BGRx:
        return redOfRgb<4>(frame, 2);
    case PixelFormat::RGB:
        return redOfRgb<3>(frame, 0);
    case PixelFormat::GRAY8:
        return redOfGray(frame);
    case PixelFormat::Jpeg:
        return redOfJpeg(frame);
    case PixelFormat::Unknown:
        break;
    }
    return {};
}

} // namespace

std::optional<std::uint8_t> averageRed(const VideoFrame &frame)
{
    return frame.hasImageBuffer() ? redOf(frame).mean() : std::nullopt;
}

} // namespace skyflare
