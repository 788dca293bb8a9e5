#include "capture/StorageWatch.h"

#include "store/PhotoDataManager.h"

#include <chrono>
#include <utility>

namespace skyflare {

namespace {

constexpr std::chrono::seconds betweenLooks{5};

} // namespace

StorageLevel storageLevel(const StorageRoom &room, std::optional<std::uint64_t> freeBytes)
{
    constexpr std::int64_t lowBelow = 20;
    constexpr std::int64_t fullBelow = 2;
    if (!freeBytes)
        return StorageLevel::Enough;
    const std::int64_t photos = room.photosIn(*freeBytes);
    if (photos < fullBelow)
        return StorageLevel::Full;
    return photos < lowBelow ? StorageLevel::Low : StorageLevel::Enough;
}

void StorageWatch::begin(std::function<void(StorageLevel)> changed)
{
    changed_ = std::move(changed);
    observation_ = services_.notificationCenter.addObserver(
        countDidChange, [weak = weak_from_this(), mainQueue = &services_.mainQueue] {
            mainQueue->async([weak] { // photos are stored on other threads
                if (const auto self = weak.lock())
                    self->look();
            });
        });
    look();
}

void StorageWatch::look(std::function<void()> seen)
{
    if (seen)
        waiting_.push_back(std::move(seen));
    if (isLooking_) {
        looksAgain_ = true;
        return;
    }
    isLooking_ = true;
    looksAgain_ = false;
    queue_->async([weak = weak_from_this(), waiting = std::exchange(waiting_, {}),
                   &mainQueue = services_.mainQueue, &freeSpace = services_.freeSpace,
                   folder = services_.folder]() mutable {
        const auto freeBytes = freeSpace.bytesAvailable(folder);
        mainQueue.async([weak, freeBytes, waiting = std::move(waiting)] {
            if (const auto self = weak.lock())
                self->hasSeen(freeBytes, waiting);
        });
    });
}

void StorageWatch::hasSeen(std::optional<std::uint64_t> freeBytes,
                           const std::vector<std::function<void()>> &waiting)
{
    isLooking_ = false;
    const StorageLevel before = std::exchange(level_, storageLevel(services_.room, freeBytes));
    if (before != level_ && changed_)
        changed_(level_);
    for (const auto &seen : waiting)
        seen();
    if (looksAgain_)
        look();
    lookAgainLater();
}

void StorageWatch::lookAgainLater()
{
    if (isTimerOn_ || (!isRunning_ && level_ == StorageLevel::Enough))
        return;
    isTimerOn_ = true;
    services_.mainQueue.asyncAfter(betweenLooks, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->isTimerOn_ = false;
        self->look();
    });
}

void StorageWatch::runBegins(std::function<void()> seen)
{
    isRunning_ = true;
    look(std::move(seen));
}

void StorageWatch::setFrameSize(int width, int height)
{
    services_.room.setFrameSize(width, height);
    look();
}

} // namespace skyflare
