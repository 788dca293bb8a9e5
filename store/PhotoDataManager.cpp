#include "store/PhotoDataManager.h"

#include "platform/persistence/ManagedObjectContext.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PhotoEntity.h"
#include "store/Uuid.h"

#include <memory>
#include <string>
#include <utility>

namespace skyflare {

namespace {

FetchRequest photoRequest()
{
    return {.entityName = photoEntityName};
}

FetchRequest requestFor(std::string uuid)
{
    FetchRequest request = photoRequest();
    request.predicate = {photoKeys::uuid, std::move(uuid)};
    return request;
}

/// Before the photo is stored: whoever sees it there finds its copy.
void keepSmallCopy(const Image &image, const std::shared_ptr<const ReducedPicture> &place)
{
    const auto copy = image.reducedPicture() ? image.reducedPicture()->read() : nullptr;
    if (copy && place)
        place->write(copy);
}

} // namespace

void PhotoDataManager::saveImage(const Image &image)
{
    ManagedObjectContext &context = services_.delegate.persistentContainer().viewContext();
    const auto photo = context.insertNewObject(photoEntityName);
    // A photo that cannot be encoded is stored all the same, without data.
    std::size_t bytes = 0;
    if (auto png = image.pngData()) {
        bytes = (*png)->size();
        photo->setValue(std::make_shared<const MemoryBytes>(*std::move(png)), photoKeys::photoData);
    }
    const std::string uuid = makeUuid();
    if (services_.thumbnails)
        keepSmallCopy(image, services_.thumbnails->reducedPicture(uuid));
    photo->setValue(uuid, photoKeys::uuid);
    photo->setValue(services_.clock.secondsSince1970(), photoKeys::createdDate);
    if (const auto saved = context.save(); !saved) {
        services_.console.printLine("Failed to save image: " + saved.error().description());
        return;
    }
    if (services_.storageRoom && bytes > 0)
        services_.storageRoom->photoStored(bytes);
    services_.notificationCenter.postNotificationName(countDidChange);
}

std::vector<PhotoModel> PhotoDataManager::fetchImages(int limit)
{
    FetchRequest request = photoRequest();
    request.sortDescriptor = {photoKeys::createdDate, false};
    request.fetchLimit = limit;
    const auto objects = services_.delegate.persistentContainer().viewContext().executeFetchRequest(request);
    if (!objects) {
        services_.console.printLine("Failed to fetch images: " + objects.error().description());
        return {};
    }
    std::vector<PhotoModel> photos;
    for (const auto &object : *objects) {
        auto photo = photoModel(*object);
        if (!photo)
            continue;
        if (services_.thumbnails)
            photo->image = photo->image.withReduced(services_.thumbnails->reducedPicture(photo->uuid));
        photos.push_back(*std::move(photo));
    }
    return photos;
}

std::int64_t PhotoDataManager::photoCount()
{
    const auto count =
        services_.delegate.persistentContainer().viewContext().countForFetchRequest(photoRequest());
    if (count)
        return *count;
    services_.console.printLine("Failed to count photos: " + count.error().description());
    return 0;
}

bool PhotoDataManager::mayHavePhoto(const std::string &uuid)
{
    const auto count =
        services_.delegate.persistentContainer().viewContext().countForFetchRequest(requestFor(uuid));
    return !count || *count > 0;
}

void PhotoDataManager::deletePhoto(std::string_view uuid)
{
    ManagedObjectContext &context = services_.delegate.persistentContainer().viewContext();
    FetchRequest request = requestFor(std::string(uuid));
    request.includesPropertyValues = false; // to delete them it is enough to know them
    const auto deleted = [&]() -> Result<> {
        auto objects = context.executeFetchRequest(request);
        if (!objects)
            return objects.error();
        for (auto &object : *objects)
            context.deleteObject(std::move(object));
        return context.save();
    }();
    if (!deleted) {
        services_.console.printLine("Failed to delete photo: " + deleted.error().description());
        return;
    }
    if (services_.thumbnails)
        services_.thumbnails->remove(uuid);
    services_.notificationCenter.postNotificationName(countDidChange);
}

void PhotoDataManager::deleteAllPhotos()
{
    ManagedObjectContext &context = services_.delegate.persistentContainer().viewContext();
    Result<> deleted = context.executeBatchDelete(photoEntityName);
    if (deleted)
        deleted = context.save();
    if (!deleted) {
        services_.console.printLine("Failed to delete all photos: " + deleted.error().description());
        return;
    }
    sweepThumbnails();
    services_.notificationCenter.postNotificationName(countDidChange);
}

void PhotoDataManager::sweepThumbnails()
{
    if (!services_.thumbnails)
        return;
    services_.thumbnails->sweep(
        [photos = *this](const std::string &uuid) mutable { return photos.mayHavePhoto(uuid); });
}

} // namespace skyflare
