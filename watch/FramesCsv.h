#pragma once

#include "capture/CaptureManager.h"
#include "platform/base/Handle.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace skyflare {

/// The table of all measured frames: "time_s,brightness,difference,triggered,captured".
///
/// Threads: one at a time.
class FramesCsv {
public:
    /// Starts the file anew. An error where it cannot be written.
    static Result<std::unique_ptr<FramesCsv>> open(const std::filesystem::path &path);

    void write(const FrameMeasurement &measurement);

    /// An error where any line has not reached the file.
    Result<> finish();

private:
    using File = Handle<std::FILE, &std::fclose>;
    FramesCsv(std::filesystem::path path, File file) : path_(std::move(path)), file_(std::move(file)) {}

    const std::filesystem::path path_;
    File file_;
};

} // namespace skyflare
