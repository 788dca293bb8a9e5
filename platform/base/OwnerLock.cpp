#include "platform/base/OwnerLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace skyflare {

Result<OwnerLock> OwnerLock::acquire(const std::filesystem::path &file)
{
    const std::string path = file.string() + ".lock";
    const auto error = [&path](int code, std::string message) {
        return Error{"lock", code, std::move(message), {{"path", path}}};
    };
    constexpr mode_t forTheUserAlone = 0600;
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, forTheUserAlone);
    if (descriptor < 0)
        return error(errno,
                     "cannot make the lock file " + path + ": " + std::generic_category().message(errno));
    OwnerLock lock(descriptor);
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return error(errno, "another process is using " + file.string());
        if (errno != EINTR)
            return error(errno, "cannot lock " + path + ": " + std::generic_category().message(errno));
    }
    return lock;
}

OwnerLock::OwnerLock(OwnerLock &&other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

OwnerLock::~OwnerLock()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

} // namespace skyflare
