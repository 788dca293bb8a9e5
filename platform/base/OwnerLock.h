#pragma once

#include "platform/base/Result.h"

#include <filesystem>

namespace skyflare {

/// Says that one process, and one object in it, owns a file. The system gives it back when the process ends,
/// however it ends.
///
/// Threads: any, one at a time.
class OwnerLock {
public:
    /// Locks the file of that name with ".lock" behind it; makes it, and leaves it there.
    static Result<OwnerLock> acquire(const std::filesystem::path &file);

    OwnerLock(OwnerLock &&other) noexcept;
    OwnerLock(const OwnerLock &) = delete;
    OwnerLock &operator=(const OwnerLock &) = delete;
    OwnerLock &operator=(OwnerLock &&) = delete;
    ~OwnerLock();

private:
    int descriptor_;
    explicit OwnerLock(int descriptor) : descriptor_(descriptor) {}
};

} // namespace skyflare
