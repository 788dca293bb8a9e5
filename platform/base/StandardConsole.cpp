#include "platform/base/StandardConsole.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

namespace skyflare {

StandardConsole::StandardConsole(int output, int errorOutput) : output_(output), errorOutput_(errorOutput)
{
    std::signal(SIGPIPE, SIG_IGN);
}

void StandardConsole::printLine(std::string_view line)
{
    write(output_, line);
}

void StandardConsole::reportLine(std::string_view line)
{
    write(errorOutput_, line);
}

void StandardConsole::write(int to, std::string_view line)
{
    const std::string whole = std::string(line) + '\n';
    const std::scoped_lock lock(mutex_);
    for (std::string_view rest = whole; !rest.empty();) {
        const ssize_t written = ::write(to, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) { // somebody has made our terminal non-blocking
            pollfd ready{to, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace skyflare
