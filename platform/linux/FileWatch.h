#pragma once

#include "platform/base/Result.h"
#include "platform/linux/OpenFile.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace skyflare {

/// Tells of every change to some files of a folder, by inotify: those whose names begin alike, whether they
/// are there yet or not. Sleeps while nothing changes.
///
/// Changes that follow each other quickly are told of together, four times a second at most; the last one is
/// never lost.
/// Threads: made and ended on one; calls back on its own. Its end waits for a call that runs.
class FileWatch {
public:
    /// @param folder  must be there.
    /// @param prefix  of the names.
    static Result<std::unique_ptr<FileWatch>> start(const std::filesystem::path &folder, std::string prefix,
                                                    std::function<void()> changed);
    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;
    ~FileWatch();

private:
    const OpenFile events_;
    const OpenFile end_; ///< readable when it is time to end
    const std::string prefix_;
    const std::function<void()> changed_;
    std::thread thread_;

    FileWatch(std::string prefix, std::function<void()> changed);
    void watch();
    [[nodiscard]] bool waitForEvents() const;
    [[nodiscard]] bool readEvents() const;
};

} // namespace skyflare
