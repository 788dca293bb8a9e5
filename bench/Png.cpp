#include "bench/Machine.h"
#include "bench/PngPictures.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/base/Handle.h"
#include "platform/image/FrameConversion.h"
#include "platform/image/PngEncoder.h"

#include <png.h>
#include <spng.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>

using namespace skyflare;
using namespace skyflare::bench;

namespace {

/// What anybody gets who sets nothing: all filters, zlib's level 6. Into memory that is there already.
void encodeByLibpng(const PixelBuffer &pixels, Bytes &into)
{
    into.clear();
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &into,
        [](png_structp writer, png_bytep data, std::size_t size) {
            auto *bytes = static_cast<Bytes *>(png_get_io_ptr(writer));
            bytes->insert(bytes->end(), data, data + size);
        },
        [](png_structp) {});
    png_set_IHDR(png, info, static_cast<png_uint_32>(pixels.width), static_cast<png_uint_32>(pixels.height),
                 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_bytep> rows;
    for (int y = 0; y < pixels.height; ++y)
        rows.push_back(const_cast<png_bytep>(pixels.row(y).data()));
    png_write_info(png, info);
    png_write_image(png, rows.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
}

bool isReadByLibpng(const Bytes &png, const PixelBuffer &pixels)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, png.data(), png.size()))
        return false;
    image.format = PNG_FORMAT_RGB;
    Bytes decoded(PNG_IMAGE_SIZE(image));
    return png_image_finish_read(&image, nullptr, decoded.data(), 0, nullptr) &&
           image.warning_or_error == 0 && decoded == pixels.rgb;
}

bool isReadByLibspng(const Bytes &png, const PixelBuffer &pixels)
{
    const Handle<spng_ctx, &spng_ctx_free> decoder(spng_ctx_new(0));
    spng_set_png_buffer(decoder.get(), png.data(), png.size());
    Bytes decoded(pixels.rgb.size());
    return spng_decode_image(decoder.get(), decoded.data(), decoded.size(), SPNG_FMT_RGB8, 0) == 0 &&
           decoded == pixels.rgb;
}

/// Ends the program unless the encoded picture is accepted by all and has the same pixels.
void requireSame(const Bytes &png, const PixelBuffer &pixels, const std::string &name)
{
    const WorkFolder folder;
    const std::string file = folder.path() / "picture.png";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char *>(png.data()), static_cast<std::streamsize>(png.size()));
    const bool isValid = std::system(("pngcheck -q " + file).c_str()) == 0;
    if (isValid && isReadByLibpng(png, pixels) && isReadByLibspng(png, pixels))
        return;
    std::fprintf(stderr, "The PNG of \"%s\" is not what was encoded.\n", name.c_str());
    std::exit(EXIT_FAILURE);
}

struct Comparison {
    double libpngSeconds = std::numeric_limits<double>::infinity();
    double oneThreadSeconds = libpngSeconds;
    double twoThreadsSeconds = libpngSeconds;
    std::size_t libpngBytes = 0;
    std::size_t bytes = 0;
};

void keepLeast(double &least, double (*clock)(), const std::function<void()> &work)
{
    const double start = clock();
    work();
    least = std::min(least, clock() - start);
}

/// The least of several rounds each. libpng is given its thread's own time, which a busy machine does not
/// lengthen; ours is by the clock on the wall.
Comparison compare(const NamedPicture &picture, int rounds, int triesARound)
{
    Comparison result;
    PngEncoder oneThread(1);
    PngEncoder twoThreads(2);
    Bytes theirs;
    Bytes ours;
    const PixelRows rows(picture.pixels);
    for (int round = 0; round < rounds; ++round) {
        keepLeast(result.libpngSeconds, threadSeconds, [&] { encodeByLibpng(picture.pixels, theirs); });
        for (int i = 0; i < triesARound; ++i) {
            keepLeast(result.oneThreadSeconds, now, [&] { (void)oneThread.encode(rows, ours); });
            keepLeast(result.twoThreadsSeconds, now, [&] { (void)twoThreads.encode(rows, ours); });
        }
    }
    requireSame(ours, picture.pixels, picture.name);
    result.libpngBytes = theirs.size();
    result.bytes = ours.size();
    return result;
}

void addSize(Table &table, const std::string &name, const Comparison &result, double most)
{
    const double share = static_cast<double>(result.bytes) / static_cast<double>(result.libpngBytes);
    table.add({name + ": size", megabytes(result.bytes), "libpng " + megabytes(result.libpngBytes),
               ratio(share), "<= " + ratio(most), share <= most});
}

void addNoisy(Table &table, const NamedPicture &picture)
{
    constexpr double aim = 40;
    const Comparison result = compare(picture, 2, 25);
    const std::string yardstick = "libpng " + duration(result.libpngSeconds);
    const double times = result.libpngSeconds / result.twoThreadsSeconds;
    table.add({picture.name + ": two threads", duration(result.twoThreadsSeconds), yardstick, ratio(times),
               ">= " + ratio(aim), times >= aim});
    table.add({picture.name + ": one thread", duration(result.oneThreadSeconds), yardstick,
               ratio(result.libpngSeconds / result.oneThreadSeconds), "for information", true});
    addSize(table, picture.name, result, 1.10);
}

/// From a frame of the camera, as a still is made; beside it the same by way of a whole RGB picture.
void addFrame(Table &table, const VideoFrame &frame)
{
    double direct = std::numeric_limits<double>::infinity();
    double byPicture = direct;
    for (int round = 0; round < 12; ++round) {
        keepLeast(direct, now, [&] { (void)encodePng(frame); });
        keepLeast(byPicture, now, [&] { (void)encodePng(*convertToRgb(frame)); });
    }
    table.add({"I420 frame to PNG, as a still", duration(direct), "RGB first: " + duration(byPicture),
               ratio(direct / byPicture), "for information", true});
}

} // namespace

int main()
{
    Table table("PNG, 12 MP (4000 x 3000), beside libpng's default on one thread");
    const VideoFrame frame = nightFrame();
    const PixelBuffer night = *convertToRgb(frame);
    addNoisy(table, {"night", night});
    addNoisy(table, {"night, much noise", withNoise(night, 4)});
    for (const NamedPicture &picture : cleanPictures())
        addSize(table, picture.name, compare(picture, 1, 1), 2.5);
    addFrame(table, frame);
    table.print();
    return EXIT_SUCCESS;
}
