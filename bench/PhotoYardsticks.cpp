#include "bench/PhotoYardsticks.h"

#include "bench/Machine.h"
#include "platform/base/Handle.h"
#include "platform/image/JpegDecoder.h"

#include <spng.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace skyflare::bench {

namespace {

constexpr std::size_t photoBytes = std::size_t{3} * 4000 * 3000; // decoded

} // namespace

double onThreads(int photos, const std::function<void(int photo)> &work)
{
    std::atomic<int> next = 0;
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
    const double start = now();
    {
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < count; ++i)
            threads.emplace_back([&] {
                for (int photo = next++; photo < photos; photo = next++)
                    work(photo);
            });
    }
    return now() - start;
}

double decodingCopies(const Bytes &jpeg, int count)
{
    return onThreads(count, [&](int) {
        const auto decoder = JpegDecoder::open(jpeg, {});
        require(decoder && decodeAllRows(**decoder), "libjpeg decodes a copy");
    });
}

double decodingPhotos(const Bytes &png, int count)
{
    return onThreads(count, [&](int) {
        Bytes pixels(photoBytes);
        decodeBySpng(png, pixels);
    });
}

void decodeBySpng(const Bytes &png, Bytes &into)
{
    const Handle<spng_ctx, &spng_ctx_free> decoder(spng_ctx_new(0));
    spng_set_png_buffer(decoder.get(), png.data(), png.size());
    require(spng_decode_image(decoder.get(), into.data(), into.size(), SPNG_FMT_RGB8, 0) == 0,
            "libspng decodes a photo");
}

} // namespace skyflare::bench
