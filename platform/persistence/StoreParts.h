#pragma once

#include "platform/persistence/EntityTable.h"
#include "platform/persistence/ReaderPool.h"
#include "platform/persistence/RowRegistry.h"

#include <vector>

namespace skyflare {

/// What a store shares with the rows it has handed out, which may outlive it.
///
/// Threads: any.
struct StoreParts {
    StoreParts(std::vector<EntityTable> ofTables, std::filesystem::path file, OpenMode mode)
        : tables(std::move(ofTables)), readers(std::move(file), mode)
    {
    }

    const std::vector<EntityTable> tables;
    ReaderPool readers;
    RowRegistry registry;
};

} // namespace skyflare
