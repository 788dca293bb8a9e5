#include "platform/linux/SystemRandom.h"

#include <sys/random.h>
#include <system_error>

#include <cerrno>

namespace skyflare {

Result<> SystemRandom::fill(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t filled = ::getrandom(bytes.data(), bytes.size(), 0);
        if (filled >= 0)
            bytes = bytes.subspan(static_cast<std::size_t>(filled));
        else if (errno != EINTR)
            return Error{"random", errno, "no random numbers: " + std::generic_category().message(errno)};
    }
    return {};
}

} // namespace skyflare
