#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/base/FreeSpace.h"
#include "platform/base/NotificationCenter.h"
#include "store/StorageRoom.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace skyflare {

enum class StorageLevel {
    Enough, ///< or nobody can tell
    Low,    ///< room for fewer than 20 more photos
    Full,   ///< for fewer than 2: no run is to begin, and one that is on has to end
};

/// @param freeBytes  nothing: nobody can tell
StorageLevel storageLevel(const StorageRoom &room, std::optional<std::uint64_t> freeBytes);

/// Watches how much room there is for photos where they are stored.
///
/// It looks when it begins, with each change of the store's count, when it is told to, and every five seconds
/// while a run is on or there is little room; otherwise it sleeps. One look at a time: a file system that
/// does not answer is not asked again before it has.
///
/// Threads: main. The file system is asked on a queue of its own.
/// Shared. Borrows what its Services refer to, which must outlive it and that queue's last work.
class StorageWatch final : public std::enable_shared_from_this<StorageWatch> {
public:
    struct Services {
        SerialQueue &mainQueue;
        QueueFactory &queues;
        NotificationCenter &notificationCenter;
        const FreeSpace &freeSpace;
        StorageRoom &room;
        std::filesystem::path folder; ///< the store's
    };

    explicit StorageWatch(const Services &services)
        : services_(services), queue_(services.queues.makeSerialQueue("free space"))
    {
    }

    /// @param changed  called on main with each new level; there is Enough at first
    void begin(std::function<void(StorageLevel)> changed);
    /// As the latest look has found it.
    [[nodiscard]] StorageLevel level() const { return level_; }
    /// Looks. @param seen  called on main when it has; may be empty
    void look(std::function<void()> seen = {});

    /// Looks, and again and again.
    void runBegins(std::function<void()> seen = {});
    void runEnds() { isRunning_ = false; }
    /// The camera's frames are of that size, in pixels.
    void setFrameSize(int width, int height);

    [[nodiscard]] StorageRoom &room() const { return services_.room; }

private:
    const Services services_;
    const std::shared_ptr<SerialQueue> queue_;
    std::function<void(StorageLevel)> changed_;
    NotificationCenter::Observation observation_;
    std::vector<std::function<void()>> waiting_; ///< for the look that comes after the one under way
    StorageLevel level_ = StorageLevel::Enough;
    bool isRunning_ = false;
    bool isLooking_ = false;
    bool looksAgain_ = false; ///< when it has looked: something has changed meanwhile
    bool isTimerOn_ = false;

    void hasSeen(std::optional<std::uint64_t> freeBytes, const std::vector<std::function<void()>> &waiting);
    void lookAgainLater();
};

} // namespace skyflare
