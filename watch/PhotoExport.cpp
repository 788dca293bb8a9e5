#include "watch/PhotoExport.h"

#include "platform/base/Files.h"

#include <system_error>

#include <cmath>
#include <ctime>

namespace skyflare {
namespace {

/// "2026-07-04_21-15-02.125", the local time of a photo.
std::string timeName(double secondsSince1970)
{
    const auto milliseconds = static_cast<std::int64_t>(std::llround(secondsSince1970 * 1000));
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d_%H-%M-%S", &local);
    std::string name(text, length);
    const std::string fraction = std::to_string(1000 + milliseconds % 1000);
    return name + "." + fraction.substr(1);
}

/// A name that no file has yet: photos of the same millisecond, and of earlier runs, all stay.
std::filesystem::path freeName(const std::filesystem::path &folder, const std::string &stem)
{
    std::filesystem::path path = folder / (stem + ".png");
    for (int number = 2; std::filesystem::exists(path); ++number)
        path = folder / (stem + "-" + std::to_string(number) + ".png");
    return path;
}

} // namespace

Result<std::unique_ptr<PhotoExport>> PhotoExport::into(const std::filesystem::path &folder,
                                                       QueueFactory &queues, Console &console)
{
    const std::filesystem::path trial = folder / ".skyflare-trial";
    if (const auto written = replaceFile(trial, {}); !written)
        return Error{.domain = "export",
                     .message = "the photos cannot be exported: " + written.error().message};
    std::error_code ignored;
    std::filesystem::remove(trial, ignored);
    return std::unique_ptr<PhotoExport>(new PhotoExport(folder, queues, console));
}

PhotoExport::PhotoExport(std::filesystem::path folder, QueueFactory &queues, Console &console)
    : folder_(std::move(folder)), console_(console), queue_(queues.makeSerialQueue("export"))
{
}

void PhotoExport::add(const PhotoModel &photo)
{
    queue_->async([this, photo] { write(photo); });
}

void PhotoExport::write(const PhotoModel &photo)
{
    const auto png = photo.image.pngData();
    if (!png)
        return report(png.error());
    const auto path = freeName(folder_, timeName(photo.createdDate));
    if (const auto written = replaceFile(path, **png); !written)
        return report(written.error());
    if (const auto added = sheet_.add(photo.image); !added)
        report(added.error());
}

void PhotoExport::finish(std::function<void()> done)
{
    queue_->async([this, done = std::move(done)] {
        if (sheet_.size() > 0)
            writeSheet();
        done();
    });
}

void PhotoExport::writeSheet()
{
    const auto png = encodePng(sheet_.draw());
    if (!png)
        return report(png.error());
    if (const auto written = replaceFile(folder_ / "contact-sheet.png", *png); !written)
        report(written.error());
}

void PhotoExport::report(const Error &error)
{
    failed_ = true;
    console_.reportLine("A photo could not be exported: " + error.message + ". It is still in the store.");
}

} // namespace skyflare
