#include "platform/linux/PicturesLibrary.h"

#include "platform/linux/NewFile.h"
#include "platform/linux/PhotoMoment.h"
#include "platform/linux/PngExif.h"

#include <cmath>
#include <ctime>

namespace skyflare {
namespace {

Result<> addPhoto(const std::filesystem::path &folder, const Image &image, double creationDate)
{
    const auto png = image.pngData();
    if (!png)
        return png.error();
    const std::chrono::milliseconds since1970(std::llround(creationDate * 1000));
    const PhotoMoment moment = photoMoment(since1970);
    const auto dated = withExifDate(**png, moment);
    if (!dated)
        return dated.error();
    auto file = NewFile::create(folder);
    if (!file)
        return file.error();
    if (const auto written = file->write(*dated, since1970); !written)
        return written.error();
    return file->publish(moment.fileStem, ".png");
}

} // namespace

PicturesLibrary::PicturesLibrary(std::filesystem::path folder, DispatchQueue &queue)
    : folder_(std::move(folder)), queue_(queue)
{
    queue_.async([where = folder_] { NewFile::removeLeftovers(where, std::time(nullptr)); });
}

void PicturesLibrary::requestAuthorization(std::function<void(AuthorizationStatus)> completion)
{
    queue_.async([folder = folder_, completion = std::move(completion)] {
        const bool writable = NewFile::create(folder).has_value();
        completion(writable ? AuthorizationStatus::Authorized : AuthorizationStatus::Denied);
    });
}

void PicturesLibrary::createAsset(const Image &image, double creationDate,
                                  std::function<void(const LibraryChange &)> completion)
{
    queue_.async([folder = folder_, image, creationDate, completion = std::move(completion)] {
        const auto added = addPhoto(folder, image, creationDate);
        completion(added ? LibraryChange{true, std::nullopt} : LibraryChange{false, added.error()});
    });
}

} // namespace skyflare
