#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PersistentContainerProvider.h"

#include <filesystem>
#include <memory>

namespace skyflare {

/// The program's one persistent container, loaded before anything else uses it.
///
/// Threads: made and loaded on main; persistentContainer() on any. Borrows its console.
class WatchStore final : public PersistentContainerProvider {
public:
    WatchStore(const std::filesystem::path &folder, QueueFactory &queues, Console &console);

    Result<> load() { return container_.loadPersistentStores(); }

    PersistentContainer &persistentContainer() override { return container_; }

private:
    std::shared_ptr<SerialQueue> backgroundQueue_;
    PersistentContainer container_;
};

} // namespace skyflare
