#pragma once

#include "platform/persistence/ManagedObjectContext.h"
#include "store/PhotoModel.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// Finds the photos that have been committed to the store since it was made.
///
/// It looks at the store's newest rows, by the order in which they came: dates will not do, for a film's
/// photos are dated by film time. Photos that another process stores meanwhile are among them.
///
/// Threads: main. Borrows the context.
class CommittedPhotos {
public:
    explicit CommittedPhotos(ManagedObjectContext &context);

    /// Those that were not handed out before, in the order in which they were committed. Inserts that
    /// could not be saved yet are not among them.
    std::vector<PhotoModel> takeNew();

    /// Tries once more to save what could not be saved before. The error says how many photos are lost
    /// with the program's end, and why.
    Result<> storeWhatWaits();

private:
    ManagedObjectContext &context_;
    std::int64_t lastRow_ = 0;

    std::vector<std::shared_ptr<ManagedObject>> newestRows(int limit);
};

} // namespace skyflare
