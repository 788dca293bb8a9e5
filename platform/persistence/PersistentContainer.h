#pragma once

#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Result.h"
#include "platform/persistence/EntityDescription.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace skyflare {

class ManagedObjectContext;
class PersistentStore;
class StoreKeeper;

/// Keeps the objects of a model in one SQLite file, "<name>.sqlite" in its folder.
///
/// Several processes may use one file at the same time.
///
/// Threads: loaded and ended by its owner; viewContext() and the context on any thread in between.
/// Owns its context. Borrows its Services, which must outlive it. Its end waits for the piece of
/// background work that runs, some milliseconds; binary values handed out go on working.
class PersistentContainer {
public:
    struct Services {
        Console &console;
        DispatchQueue &backgroundQueue; ///< for short pieces of work; serial or concurrent
    };

    struct Description {
        std::string name;
        std::filesystem::path folder; ///< made if it is missing
        ManagedObjectModel model;
        std::chrono::milliseconds writerTimeout{5000}; ///< how long a save waits for other processes
    };

    PersistentContainer(Description description, const Services &services);
    PersistentContainer(const PersistentContainer &) = delete;
    PersistentContainer &operator=(const PersistentContainer &) = delete;
    ~PersistentContainer();

    /// Opens the file, or makes it. On an error the file is as it was, and there is no context. The
    /// error's userInfo has the "path".
    Result<> loadPersistentStores();

    /// The one context. To ask for it before the stores are loaded is a programming error.
    ManagedObjectContext &viewContext();

    /// Whether other processes have added or deleted objects since this was last asked. Waits for a writer of
    /// this process for some milliseconds, then says that it is busy.
    Result<bool> takeForeignChanges();

    [[nodiscard]] std::filesystem::path file() const;

private:
    const Description description_;
    const Services services_;
    std::shared_ptr<PersistentStore> store_;
    std::shared_ptr<StoreKeeper> keeper_;
    std::unique_ptr<ManagedObjectContext> context_;
};

} // namespace skyflare
