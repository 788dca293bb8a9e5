#include "watch/CommittedPhotos.h"

#include "store/PhotoEntity.h"

#include <algorithm>

namespace skyflare {

CommittedPhotos::CommittedPhotos(ManagedObjectContext &context) : context_(context)
{
    const auto newest = newestRows(1);
    lastRow_ = newest.empty() ? 0 : newest.front()->objectID().value_or(0);
}

std::vector<std::shared_ptr<ManagedObject>> CommittedPhotos::newestRows(int limit)
{
    auto rows =
        context_.executeFetchRequest({.entityName = photoEntityName,
                                      .sortDescriptor = SortDescriptor{std::string(orderOfInsertion), false},
                                      .fetchLimit = limit,
                                      .includesPendingChanges = false});
    return rows ? std::move(*rows) : std::vector<std::shared_ptr<ManagedObject>>{};
}

std::vector<PhotoModel> CommittedPhotos::takeNew()
{
    // A save that failed is made up for by a later one, so that several may be new at once.
    constexpr int usualLimit = 4;
    auto rows = newestRows(usualLimit);
    for (int limit = usualLimit; std::ssize(rows) == limit && rows.back()->objectID() > lastRow_;)
        rows = newestRows(limit *= 4);

    std::vector<PhotoModel> photos;
    std::ranges::reverse(rows);
    for (const auto &row : rows) {
        if (row->objectID() <= lastRow_)
            continue;
        lastRow_ = *row->objectID();
        if (auto photo = photoModel(*row))
            photos.push_back(std::move(*photo));
    }
    return photos;
}

Result<> CommittedPhotos::storeWhatWaits()
{
    const auto saved = context_.save();
    if (saved)
        return {};
    const auto waiting = context_.insertedObjects().size();
    return Error{.domain = saved.error().domain,
                 .code = saved.error().code,
                 .message = std::to_string(waiting) + (waiting == 1 ? " photo" : " photos") +
                            " could not be stored: " + saved.error().message};
}

} // namespace skyflare
