#pragma once

#include "platform/base/Bytes.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace skyflare::bench {

/// Ends the program where something does not hold that every result stands on.
void require(bool holds, const char *what);

/// Seconds of a clock that never goes back.
double now();

/// Processor time of all threads of this process so far, in seconds.
double processorSeconds();

/// Processor time of the calling thread alone: what else runs on the machine does not lengthen it.
double threadSeconds();

/// The most memory that this process has had at once since the start, or since forgetPeak(). Bytes.
std::uint64_t peakMemory();
void forgetPeak();
/// What it has now.
std::uint64_t currentMemory();

/// Has the system forget what it keeps of a file in memory, so that it is read from the disk again.
void forgetFile(const std::filesystem::path &path);

/// Writes `bytes` to a new file in `folder` and syncs it, as a program does that only wants them to be safe.
/// @return how long that took, in seconds; less than 0 if it failed.
double writeAndSync(const std::filesystem::path &folder, const Bytes &bytes);

/// "12.3 MB", "0.0451 MB": three significant digits, in millions of bytes.
std::string megabytes(std::uint64_t bytes);

} // namespace skyflare::bench
