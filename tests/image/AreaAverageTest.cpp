#include "platform/image/AreaAverage.h"

#include "platform/image/RedSum.h"
#include "platform/image/YcbcrConversion.h"
#include "tests/image/TestPictures.h"

#include <doctest/doctest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

using namespace skyflare;

namespace {

constexpr std::array allFormats{PixelFormat::NV12, PixelFormat::I420, PixelFormat::YUY2, PixelFormat::UYVY,
                                PixelFormat::RGBx, PixelFormat::BGRx, PixelFormat::RGB,  PixelFormat::GRAY8};
constexpr std::array matrices{ColorMatrix::Bt601, ColorMatrix::Bt709, ColorMatrix::Bt2020};
constexpr std::array ranges{ColorRange::Limited, ColorRange::Full};

bool isRgb(PixelFormat format)
{
    return format == PixelFormat::RGBx || format == PixelFormat::BGRx || format == PixelFormat::RGB;
}

/// The Recommendations' formulas in real numbers: red, green and blue of a pixel.
std::array<double, 3> exactRgb(Samples ycbcr, ColorMatrix matrix, ColorRange range)
{
    using Weights = std::pair<double, double>;
    constexpr std::array weights{Weights{0.299, 0.114}, Weights{0.2126, 0.0722}, Weights{0.2627, 0.0593}};
    const auto [red, blue] = weights[static_cast<std::size_t>(matrix)];
    const bool full = range == ColorRange::Full;
    const double y = full ? ycbcr[0] : (ycbcr[0] - 16) * 255.0 / 219;
    const double cb = (ycbcr[1] - 128) * (full ? 1 : 255.0 / 224) * 2 * (1 - blue);
    const double cr = (ycbcr[2] - 128) * (full ? 1 : 255.0 / 224) * 2 * (1 - red);
    const double green = y - (red * cr + blue * cb) / (1 - red - blue);
    return {std::clamp(y + cr, 0.0, 255.0), std::clamp(green, 0.0, 255.0), std::clamp(y + cb, 0.0, 255.0)};
}

/// Scattered samples; chroma is the same for the four pixels that share it in NV12.
Samples scatteredYcbcr(int x, int y)
{
    return {scattered(x, y, 0), scattered(x / 2, y / 2, 1), scattered(x / 2, y / 2, 2)};
}

/// Wrong sums of frames of one colour each, for every pair of luma and red chroma; blue chroma runs along.
int wrongPlainFrames(ColorMatrix matrix, ColorRange range)
{
    const YcbcrConversion k = ycbcrConversion(matrix, range);
    Bytes luma(64); // a whole vector of each machine
    Bytes chroma(64);
    VideoFrame frame{.format = PixelFormat::NV12, .width = 64, .height = 1, .matrix = matrix, .range = range};
    frame.planes = {{{luma.data(), 64}, {chroma.data(), 64}, {}}};
    int wrong = 0;
    for (int cr = 0; cr < 256; ++cr) {
        for (std::size_t i = 0; i < chroma.size(); ++i)
            chroma[i] = static_cast<std::uint8_t>(i % 2 == 1 ? cr : 77 * cr + static_cast<int>(i));
        for (int y = 0; y < 256; ++y) {
            std::ranges::fill(luma, static_cast<std::uint8_t>(y));
            wrong += redSum(frame) != static_cast<std::uint64_t>(64 * k.redOf(y, cr));
        }
    }
    return wrong;
}

/// Wrong sums of scattered frames, of widths around a vector's; the last byte is the last sample.
int wrongScatteredFrames(PixelFormat format, ColorMatrix matrix, ColorRange range)
{
    const YcbcrConversion k = ycbcrConversion(matrix, range);
    int wrong = 0;
    for (const int width : {1, 2, 31, 64, 65, 127, 191}) {
        VideoFrame frame = makeFrame(format, width, 3, 0, scatteredYcbcr);
        frame.matrix = matrix;
        frame.range = range;
        std::uint64_t red = 0;
        for (int i = 0; i < width * 3; ++i) {
            const Samples at = scatteredYcbcr(i % width, i / width);
            const int cr = format == PixelFormat::GRAY8 ? 128 : at[2];
            red += static_cast<std::uint64_t>(isRgb(format) ? at[0] : k.redOf(at[0], cr));
        }
        wrong += redSum(frame) != red;
    }
    return wrong;
}

} // namespace

TEST_CASE("a pixel's colour is the Recommendation's to 0.53 of a step, green to 0.54")
{
    // All luma and red chroma in 256 × 256 pairs of pixels; blue chroma runs along, with other pairs a frame.
    for (const int blueFactor : {1, 77}) {
        const auto samples = [blueFactor](int x, int y) {
            return Samples{static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x / 2 * blueFactor + y),
                           static_cast<std::uint8_t>(x / 2)};
        };
        VideoFrame frame = makeFrame(PixelFormat::YUY2, 512, 256, 0, samples);
        for (const ColorMatrix matrix : matrices) {
            for (const ColorRange range : ranges) {
                frame.matrix = matrix;
                frame.range = range;
                const PixelBuffer rgb = *convertToRgb(frame);
                std::array<double, 3> worst{};
                double mean = 0;
                for (int i = 0; i < 256 * 256; ++i) {
                    const auto exact = exactRgb(samples(i % 256 * 2, i / 256), matrix, range);
                    mean += exact[0] / (256 * 256);
                    for (std::size_t c = 0; c < 3; ++c)
                        worst[c] = std::max(
                            worst[c], std::abs(rgb.rgb[static_cast<std::size_t>(i) * 6 + c] - exact[c]));
                }
                CHECK(worst[0] < 0.53);
                CHECK(worst[1] < 0.54);
                CHECK(worst[2] < 0.53);
                CHECK(std::abs(averageRed(frame).value() - mean) < 0.52);
            }
        }
    }
}

TEST_CASE("the picture is the same in every format, at odd sizes and with padded rows")
{
    struct Size {
        int width, height, padding;
    };
    for (const Size size :
         {Size{1, 1, 0}, Size{2, 2, 3}, Size{3, 5, 1}, Size{37, 18, 0}, Size{130, 71, 29}}) {
        CAPTURE(size.width);
        const VideoFrame first =
            makeFrame(PixelFormat::NV12, size.width, size.height, size.padding, scatteredYcbcr);
        const PixelBuffer rgb = *convertToRgb(first);
        const auto pixels = [&rgb](int x, int y) {
            const auto pixel = rgb.row(y).subspan(3 * static_cast<std::size_t>(x), 3);
            return Samples{pixel[0], pixel[1], pixel[2]};
        };
        for (const PixelFormat format : allFormats) {
            if (format == PixelFormat::GRAY8)
                continue;
            const Sampler samples = isRgb(format) ? Sampler(pixels) : scatteredYcbcr;
            const VideoFrame frame = makeFrame(format, size.width, size.height, size.padding, samples);
            CHECK(averageRed(frame) == averageRed(first));
            CHECK(convertToRgb(frame)->rgb == rgb.rgb);
        }
    }
}

TEST_CASE("on every instruction set, the red is that of the conversion pixel by pixel, to the bit")
{
    for (const std::int64_t instructions : hwy::SupportedAndGeneratedTargets()) {
        hwy::GetChosenTarget().Update(instructions);
        CAPTURE(hwy::TargetName(instructions));
        for (const ColorMatrix matrix : matrices) {
            for (const ColorRange range : ranges) {
                CHECK(wrongPlainFrames(matrix, range) == 0);
                for (const PixelFormat format : allFormats)
                    CHECK(wrongScatteredFrames(format, matrix, range) == 0);
            }
        }
    }
    hwy::GetChosenTarget().DeInit();
}

TEST_CASE("a frame without pixels has no red")
{
    CHECK_FALSE(averageRed(makeFrame(PixelFormat::NV12, 0, 4, 0, scatteredYcbcr)));
    CHECK_FALSE(averageRed({}));
    VideoFrame frame = makeFrame(PixelFormat::I420, 4, 4, 0, scatteredYcbcr);
    frame.planes[2] = {};
    CHECK_FALSE(averageRed(frame));
    CHECK_FALSE(convertToRgb(frame));
}
