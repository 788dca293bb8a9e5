#pragma once

#include "platform/base/OwnerLock.h"
#include "platform/base/Result.h"

#include <QLocalServer>
#include <filesystem>
#include <functional>
#include <memory>

namespace skyflare {

/// That one process shows the app on the files of one folder: the first one owns it, a later one asks the
/// first to come to the front, and ends.
///
/// A lock file says who is first, a local socket carries the request: both work without a session bus, and
/// for each --data-dir apart. Threads: main.
class SingleInstance {
public:
    /// Nothing if another process is first. An error where the folder cannot be locked at all.
    /// @param folder  made if it is missing
    static Result<std::unique_ptr<SingleInstance>> claim(const std::filesystem::path &folder);

    /// Asks the first process to show itself. The error is one line for a person.
    static Result<> activateFirst(const std::filesystem::path &folder);

    /// Calls `activated` whenever a later process has asked. Without a socket nobody can ask: an error.
    Result<> listen(std::function<void()> activated);

private:
    SingleInstance(OwnerLock lock, std::filesystem::path folder);

    void serveNext();

    const OwnerLock lock_;
    const std::filesystem::path folder_;
    QLocalServer server_;
    std::function<void()> activated_;
};

} // namespace skyflare
