#include "watch/WatchStore.h"

#include "store/PhotoEntity.h"

namespace skyflare {

WatchStore::WatchStore(const std::filesystem::path &folder, QueueFactory &queues, Console &console)
    : backgroundQueue_(queues.makeSerialQueue("storage")),
      container_({.name = storageContainerName, .folder = folder, .model = storageModel()},
                 {.console = console, .backgroundQueue = *backgroundQueue_})
{
}

} // namespace skyflare
