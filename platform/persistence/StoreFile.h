#pragma once

#include "platform/persistence/EntityTable.h"
#include "platform/sqlite/Database.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

namespace skyflare {

/// A store's file, open and of the form that the program knows.
struct StoreFile {
    std::unique_ptr<Database> writer;
    OpenMode readers = OpenMode::Query; ///< how further connections read it
};

/// Opens the file, or makes it, with its folder. A file that is no database, that another program made, or
/// that has a later version is refused and left as it is, byte for byte. One that cannot be written is
/// opened for reading.
/// @return an error whose userInfo has the "path".
Result<StoreFile> openStoreFile(const std::filesystem::path &file, const std::vector<EntityTable> &tables,
                                int version, std::chrono::milliseconds writerTimeout);

} // namespace skyflare
