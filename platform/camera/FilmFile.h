#pragma once

#include "platform/base/Result.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace skyflare {

/// What can be told of a film's file without decoding it.
struct FilmFile {
    /// Its own headers name more bytes than it has: a copy or a download was broken off. Known for MP4 and
    /// QuickTime (ISO/IEC 14496-12), Matroska and WebM (RFC 9559), and AVI.
    bool isCutShort = false;

    /// How long it is by its own header, where no demuxer tells: for AVI.
    std::optional<std::chrono::nanoseconds> length = {};

    /// Looks at the file. An error, one line that names the file, where no film can be read from it: not
    /// there, a folder, no permission, empty, an MP4 without its index. Any thread.
    static Result<FilmFile> inspect(const std::filesystem::path &path);
};

} // namespace skyflare
