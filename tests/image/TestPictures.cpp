#include "tests/image/TestPictures.h"

#include "platform/base/Handle.h"

#include <jpeglib.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <vector>

namespace skyflare {
namespace {

/// A plane as groups of bytes, one group for `pixels` pixels of every `rows`th row. A byte is one of the
/// samples 0, 1, 2; '+' is sample 0 of the group's second pixel, '.' is no sample.
struct PlanePattern {
    int pixels;
    int rows;
    std::string_view bytes;
};

std::vector<PlanePattern> patternsOf(PixelFormat format)
{
    static const std::map<PixelFormat, std::vector<PlanePattern>> patterns = {
        {PixelFormat::NV12, {{1, 1, "0"}, {2, 2, "12"}}},
        {PixelFormat::I420, {{1, 1, "0"}, {2, 2, "1"}, {2, 2, "2"}}},
        {PixelFormat::YUY2, {{2, 1, "01+2"}}},
        {PixelFormat::UYVY, {{2, 1, "102+"}}},
        {PixelFormat::RGBx, {{1, 1, "012."}}},
        {PixelFormat::BGRx, {{1, 1, "210."}}},
        {PixelFormat::RGB, {{1, 1, "012"}}},
        {PixelFormat::GRAY8, {{1, 1, "0"}}},
    };
    return patterns.at(format);
}

} // namespace

VideoFrame makeFrame(PixelFormat format, int width, int height, int padding, const Sampler &at)
{
    constexpr std::uint8_t noSample = 0xEE;
    VideoFrame frame{.format = format, .width = width, .height = height};
    const auto bytes = std::make_shared<Bytes>();
    std::vector<std::size_t> offsets;
    for (const PlanePattern &plane : patternsOf(format)) {
        const int groups = (width + plane.pixels - 1) / plane.pixels;
        frame.planes[offsets.size()].stride = groups * std::ssize(plane.bytes) + padding;
        offsets.push_back(bytes->size());
        for (int y = 0; y < height; y += plane.rows) {
            for (int x = 0; x < width; x += plane.pixels) {
                for (const char byte : plane.bytes)
                    bytes->push_back(byte == '.'   ? noSample
                                     : byte == '+' ? at(x + 1, y)[0]
                                                   : at(x, y)[static_cast<std::size_t>(byte - '0')]);
            }
            bytes->insert(bytes->end(), static_cast<std::size_t>(padding), noSample);
        }
    }
    bytes->shrink_to_fit(); // so that AddressSanitizer sees a read beyond the last byte
    for (std::size_t i = 0; i < offsets.size(); ++i)
        frame.planes[i].data = bytes->data() + offsets[i];
    frame.owner = bytes;
    return frame;
}

PixelBuffer makePicture(int width, int height, const Sampler &samples)
{
    PixelBuffer picture = PixelBuffer::ofSize(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Samples rgb = samples(x, y);
            std::copy(rgb.begin(), rgb.end(), picture.row(y).begin() + std::ptrdiff_t{3} * x);
        }
    }
    return picture;
}

std::uint8_t scattered(int x, int y, int channel)
{
    const auto part = [](int number, std::uint32_t by) { return static_cast<std::uint32_t>(number) * by; };
    const std::uint32_t seed = part(x, 73856093) ^ part(y, 19349663) ^ part(channel, 83492791);
    return static_cast<std::uint8_t>((seed * 2654435761U) >> 23);
}

Samples noise(int x, int y)
{
    return {scattered(x, y, 0), scattered(x, y, 1), scattered(x, y, 2)};
}

Bytes encodeJpeg(const PixelBuffer &pixels, JpegKind kind)
{
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char *data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &data, &size);
    jpeg.image_width = static_cast<JDIMENSION>(pixels.width);
    jpeg.image_height = static_cast<JDIMENSION>(pixels.height);
    const bool cmyk = kind == JpegKind::Cmyk;
    jpeg.input_components = cmyk ? 4 : 3;
    jpeg.in_color_space = cmyk ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    if (kind == JpegKind::Gray)
        jpeg_set_colorspace(&jpeg, JCS_GRAYSCALE);
    jpeg_set_quality(&jpeg, 100, TRUE);
    jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = kind == JpegKind::YcbcrHalved ? 2 : 1;
    if (kind == JpegKind::Progressive)
        jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    Bytes inks; // as Adobe writes them: inverted, so with no black they are the light itself
    for (int y = 0; y < pixels.height; ++y) {
        const auto row = pixels.row(y);
        inks.clear();
        for (std::size_t i = 0; i < row.size(); i += 3)
            inks.insert(inks.end(), {row[i], row[i + 1], row[i + 2], 255});
        auto *line = const_cast<JSAMPROW>(cmyk ? inks.data() : row.data());
        jpeg_write_scanlines(&jpeg, &line, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    const Handle<unsigned char, &std::free> owned(data);
    return {data, data + size};
}

} // namespace skyflare
