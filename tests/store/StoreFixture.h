#pragma once

#include "platform/image/Image.h"
#include "platform/image/PngEncoder.h"
#include "platform/persistence/ManagedObjectContext.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PersistentContainerProvider.h"
#include "store/PhotoDataManager.h"
#include "store/PhotoEntity.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace skyflare {

/// A picture of noise, which no encoding makes smaller: about `kilobytes` in size, another for each seed.
inline Image noise(std::uint32_t seed, int kilobytes = 3)
{
    std::mt19937 random(seed);
    PixelBuffer pixels = PixelBuffer::ofSize(64, kilobytes * 16 / 3);
    for (auto &each : pixels.rgb)
        each = static_cast<std::uint8_t>(random());
    return *Image::fromData(*encodePng(pixels));
}

inline Bytes pixelsOf(const Image &image)
{
    const auto pixels = image.pixels();
    return pixels ? pixels->rgb : Bytes();
}

/// One program that has the store of a folder open.
class StoreUser final : public PersistentContainerProvider {
public:
    StoreUser(const std::filesystem::path &folder, DispatchQueue &queue, const Clock &clock,
              std::chrono::milliseconds writerTimeout = std::chrono::milliseconds(20))
        : container_({storageContainerName, folder, storageModel(), writerTimeout}, {console, queue}),
          loaded(container_.loadPersistentStores()),
          photos({*this, center, clock, console})
    {
    }

    StoreUser(const std::filesystem::path &folder, VirtualTime &time)
        : StoreUser(folder, time.globalUserInitiated(), time)
    {
    }

    RecordingConsole console;
    NotificationCenter center;

private:
    PersistentContainer container_;
    std::atomic<int> posts_ = 0;
    NotificationCenter::Observation observation_ = center.addObserver("CountDidChange", [this] { ++posts_; });

public:
    const Result<> loaded;
    PhotoDataManager photos;

    PersistentContainer &persistentContainer() override { return container_; }
    ManagedObjectContext &context() { return container_.viewContext(); }

    /// How often "CountDidChange" has been posted since the last time.
    int takePosts() { return posts_.exchange(0); }

    /// The uuids of what a fetch gives, in order.
    std::vector<std::string> uuids(int limit = 0)
    {
        std::vector<std::string> all;
        for (const PhotoModel &photo : photos.fetchImages(limit))
            all.push_back(photo.uuid);
        return all;
    }

    /// Stores a record as it is given.
    void insert(AttributeValue uuid, AttributeValue data, AttributeValue date)
    {
        const auto object = context().insertNewObject("PhotoEntity");
        object->setValue(std::move(uuid), "uuid");
        object->setValue(std::move(data), "photoData");
        object->setValue(std::move(date), "createdDate");
        if (const auto saved = context().save(); !saved)
            console.printLine(saved.error().description());
    }
};

/// A store in a folder of its own, in virtual time.
struct StoreFixture {
    TemporaryFolder folder;
    VirtualTime time;
    StoreUser user{folder.path(), time};
};

} // namespace skyflare
