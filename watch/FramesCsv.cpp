#include "watch/FramesCsv.h"

#include "platform/base/Text.h"

#include <system_error>

#include <cerrno>

namespace skyflare {
namespace {

Error fileError(const std::filesystem::path &path)
{
    const int code = errno;
    return {.domain = "file",
            .code = code,
            .message = "the table of frames " + path.string() +
                       " cannot be written: " + std::generic_category().message(code)};
}

} // namespace

Result<std::unique_ptr<FramesCsv>> FramesCsv::open(const std::filesystem::path &path)
{
    File file(std::fopen(path.c_str(), "we"));
    if (!file || std::fputs("time_s,brightness,difference,triggered,captured\n", file.get()) < 0)
        return fileError(path);
    return std::unique_ptr<FramesCsv>(new FramesCsv(path, std::move(file)));
}

void FramesCsv::write(const FrameMeasurement &measurement)
{
    // Integer arithmetic: microseconds are exact, whatever the length of the film.
    const auto microseconds = measurement.streamTime.count() / 1000;
    std::fprintf(file_.get(), "%lld.%06lld,%s,%s,%d,%d\n", static_cast<long long>(microseconds / 1'000'000),
                 static_cast<long long>(microseconds % 1'000'000),
                 shortestDecimal(measurement.brightness).c_str(),
                 shortestDecimal(measurement.difference).c_str(), measurement.triggered ? 1 : 0,
                 measurement.captured ? 1 : 0);
}

Result<> FramesCsv::finish()
{
    if (std::fflush(file_.get()) != 0 || std::ferror(file_.get()))
        return fileError(path_);
    return {};
}

} // namespace skyflare
