#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/Result.h"

#include <filesystem>
#include <span>
#include <string_view>

namespace skyflare {

/// The error of a call that has left `code` in errno: "cannot open /tmp/a: Permission denied".
Error fileError(std::string_view what, const std::filesystem::path &path, int code);

/// Makes sure that a name which has come to a folder outlives a power cut.
Result<> syncFolder(const std::filesystem::path &folder);

/// Reads a whole file. The error names the path and says why.
Result<Bytes> readFile(const std::filesystem::path &path);

enum class Durability { Synced, None };
enum class FileReaders { Usual, Owner }; ///< who may read it: as the user's mask says, or its user alone

/// Puts `bytes` at `path` so that a crash at any moment leaves the old file or the new one, whole:
/// a temporary name in the same folder, synced, renamed, the folder synced. Makes missing folders.
/// @param durability  None: readers find one of the two as well, but after a crash it may be damaged; for
///                    what can be made again.
Result<> replaceFile(const std::filesystem::path &path, std::span<const std::uint8_t> bytes,
                     Durability durability = Durability::Synced, FileReaders readers = FileReaders::Usual);

} // namespace skyflare
