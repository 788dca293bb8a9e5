#include "store/StoreWatch.h"

#include "platform/persistence/PersistentContainer.h"
#include "store/PhotoDataManager.h"

#include <array>

namespace skyflare {

namespace {

using std::chrono::milliseconds;

/// From one look to the next, the first from when the file has changed: a commit is seen only when the disk
/// has it.
constexpr std::array delays{milliseconds{250}, milliseconds{1000}, milliseconds{4000}, milliseconds{16000}};

} // namespace

void StoreWatch::fileChanged()
{
    int series = 0;
    {
        const std::scoped_lock lock(mutex_);
        if (isFirstAhead_)
            return;
        isFirstAhead_ = true;
        series = ++series_;
    }
    lookLater(series, 0);
}

void StoreWatch::lookLater(int series, std::size_t number)
{
    services_.queue.asyncAfter(delays[number], [weak = weak_from_this(), series, number] {
        if (const auto self = weak.lock())
            self->look(series, number);
    });
}

void StoreWatch::look(int series, std::size_t number)
{
    {
        const std::scoped_lock lock(mutex_);
        if (series != series_)
            return;
        isFirstAhead_ = false;
    }
    // While this process writes itself, the next look comes soon enough: its own writes are told as well.
    const auto isNew = services_.delegate.persistentContainer().takeForeignChanges();
    if (isNew && *isNew)
        services_.notificationCenter.postNotificationName(countDidChange);
    if (number + 1 < delays.size())
        lookLater(series, number + 1);
}

} // namespace skyflare
