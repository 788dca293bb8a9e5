#pragma once

#include "platform/persistence/PersistentContainer.h"
#include "store/PersistentContainerProvider.h"
#include "store/PhotoEntity.h"

#include <chrono>
#include <mutex>
#include <stdexcept>

namespace skyflare {

/// A real photo store in a test's own folder, made on first use. Any thread.
class StoreInFolder final : public PersistentContainerProvider {
public:
    StoreInFolder(const std::filesystem::path &folder, Console &console, DispatchQueue &backgroundQueue,
                  std::chrono::milliseconds writerTimeout = std::chrono::seconds(5))
        : container_({std::string(storageContainerName), folder, storageModel(), writerTimeout},
                     {console, backgroundQueue})
    {
    }
    PersistentContainer &persistentContainer() override
    {
        std::call_once(loaded_, [this] {
            if (const auto done = container_.loadPersistentStores(); !done)
                throw std::runtime_error(done.error().description());
        });
        return container_;
    }

private:
    PersistentContainer container_;
    std::once_flag loaded_;
};

} // namespace skyflare
