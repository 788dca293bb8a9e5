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

} // namespace

void PhotoDataManager::saveImage(const Image &image)
{
    ManagedObjectContext &context = services_.delegate.persistentContainer().viewContext();
    const auto photo = context.insertNewObject(photoEntityName);
    // A photo that cannot be encoded is stored all the same, without data.
    if (auto png = image.pngData())
        photo->setValue(std::make_shared<const MemoryBytes>(*std::move(png)), photoKeys::photoData);
    photo->setValue(makeUuid(), photoKeys::uuid);
    photo->setValue(services_.clock.secondsSince1970(), photoKeys::createdDate);
    if (const auto saved = context.save(); !saved) {
        services_.console.printLine("Failed to save image: " + saved.error().description());
        return;
    }
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
        if (auto photo = photoModel(*object))
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

void PhotoDataManager::deletePhoto(std::string_view uuid)
{
    ManagedObjectContext &context = services_.delegate.persistentContainer().viewContext();
    FetchRequest request = photoRequest();
    request.predicate = {photoKeys::uuid, std::string(uuid)};
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
    services_.notificationCenter.postNotificationName(countDidChange);
}

} // namespace skyflare
