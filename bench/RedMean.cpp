#include "bench/Machine.h"
#include "bench/ReadOnce.h"
#include "bench/Table.h"
#include "platform/image/AreaAverage.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <random>
#include <span>
#include <string>
#include <vector>

using namespace skyflare;
using namespace skyflare::bench;

namespace {

/// A format, how many bytes it takes for two pixels, and what OpenCV does to it.
struct Format {
    const char *name;
    PixelFormat format;
    int bytesPerPair;
    int openCvType;     ///< of the picture as OpenCV sees it
    int openCvToRgb;    ///< for cvtColor(); negative: RGB already
    double readTimes;   ///< the reach: at most so many times the time to read
    double openCvTimes; ///< and so many times as fast as OpenCV
};

constexpr std::array formats{
    Format{"NV12", PixelFormat::NV12, 3, CV_8UC1, cv::COLOR_YUV2RGB_NV12, 1.3, 12},
    Format{"I420", PixelFormat::I420, 3, CV_8UC1, cv::COLOR_YUV2RGB_I420, 1.3, 12},
    Format{"YUY2", PixelFormat::YUY2, 4, CV_8UC2, cv::COLOR_YUV2RGB_YUY2, 1.3, 12},
    Format{"UYVY", PixelFormat::UYVY, 4, CV_8UC2, cv::COLOR_YUV2RGB_UYVY, 1.3, 12},
    Format{"RGBx", PixelFormat::RGBx, 8, CV_8UC4, -1, 1.2, 1},
    Format{"BGRx", PixelFormat::BGRx, 8, CV_8UC4, -1, 1.2, 1},
};

struct Size {
    const char *name;
    int width, height;
};

constexpr std::array sizes{Size{"1080p", 1920, 1080}, Size{"4K", 3840, 2160}};

/// More noise than the last cache holds. Frames are taken from it one after another, each by one reader, so
/// a frame has left the caches when its turn comes again.
class ColdBytes {
public:
    ColdBytes() : bytes_(std::clamp<std::size_t>(2 * lastCacheBytes(), 256'000'000, 1'200'000'000))
    {
        std::mt19937_64 random(1); // always the same
        for (std::size_t i = 0; i + 8 <= bytes_.size(); i += 8) {
            const std::uint64_t noise = random();
            std::copy_n(reinterpret_cast<const std::uint8_t *>(&noise), 8,
                        bytes_.begin() + std::ptrdiff_t(i));
        }
    }

    std::span<std::uint8_t> next(std::size_t size)
    {
        if (at_ + size > bytes_.size())
            at_ = 0;
        const std::span taken(bytes_.data() + at_, size);
        at_ += (size + 4095) / 4096 * 4096;
        return taken;
    }

private:
    static std::size_t lastCacheBytes()
    {
        return static_cast<std::size_t>(std::max(0L, sysconf(_SC_LEVEL3_CACHE_SIZE)));
    }

    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

VideoFrame frameOf(PixelFormat format, Size size, std::span<const std::uint8_t> bytes)
{
    const std::ptrdiff_t width = size.width;
    const std::uint8_t *second = bytes.data() + width * size.height;
    VideoFrame frame{.format = format, .width = size.width, .height = size.height};
    if (format == PixelFormat::NV12)
        frame.planes = {{{bytes.data(), width}, {second, width}, {}}};
    else if (format == PixelFormat::I420)
        frame.planes = {
            {{bytes.data(), width}, {second, width / 2}, {second + width * size.height / 4, width / 2}}};
    else
        frame.planes[0] = {bytes.data(), std::ssize(bytes) / size.height};
    return frame;
}

/// Where results go, so that no compiler leaves the work out.
volatile double sink;

/// On this thread alone: what else runs on the machine would lengthen long work more than short work.
template <typename Work> double secondsOf(Work work)
{
    const double start = threadSeconds();
    sink = static_cast<double>(work());
    return threadSeconds() - start;
}

struct Times {
    std::vector<double> read, readAhead, red, openCv;
};

/// The yardstick reads all bytes of a frame, also I420's blue chroma, which the red does without.
/// One frame for each reader in turn, so that what else the machine does hits all alike.
Times measure(const Format &format, Size size, ColdBytes &cold)
{
    const std::size_t frameBytes = static_cast<std::size_t>(size.width) *
                                   static_cast<std::size_t>(size.height * format.bytesPerPair) / 2;
    const bool isPlanar = format.openCvType == CV_8UC1;
    Times times;
    for (int round = 0; round < 101; ++round) {
        const auto plain = cold.next(frameBytes);
        times.read.push_back(secondsOf([&] { return readOnce(plain, AskAhead::No); }));
        const auto ahead = cold.next(frameBytes);
        times.readAhead.push_back(secondsOf([&] { return readOnce(ahead, AskAhead::Yes); }));
        const VideoFrame frame = frameOf(format.format, size, cold.next(frameBytes));
        times.red.push_back(secondsOf([&] { return *averageRed(frame); }));
        const cv::Mat picture(isPlanar ? size.height * 3 / 2 : size.height, size.width, format.openCvType,
                              cold.next(frameBytes).data());
        // Memory that has been written to before, so that no page is fresh, but not in this round: between
        // two frames of a camera 33 ms pass, in which the caches serve others.
        cv::Mat rgb(
            size.height, size.width, CV_8UC3,
            cold.next(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 3)
                .data());
        times.openCv.push_back(secondsOf([&] {
            if (format.openCvToRgb < 0)
                return cv::mean(picture)[0];
            cv::cvtColor(picture, rgb, format.openCvToRgb);
            return cv::mean(rgb)[0];
        }));
    }
    return times;
}

} // namespace

int main()
{
    cv::setNumThreads(1);
    ColdBytes cold;
    Table table("Mean red of one cold frame");
    for (const Size &size : sizes) {
        for (const Format &format : formats) {
            const Times times = measure(format, size, cold);
            const double red = median(times.red);
            const double read = std::min(median(times.read), median(times.readAhead));
            const double openCv = median(times.openCv);
            const std::string what = std::string(format.name) + " " + size.name;
            table.add({what, duration(red), "read once: " + duration(read), ratio(red / read),
                       "<= " + ratio(format.readTimes), red <= format.readTimes * read});
            table.add(
                {what, duration(red),
                 (format.openCvToRgb < 0 ? "OpenCV mean: " : "OpenCV cvtColor + mean: ") + duration(openCv),
                 ratio(openCv / red), ">= " + ratio(format.openCvTimes), openCv >= format.openCvTimes * red});
        }
    }
    table.print();
}
