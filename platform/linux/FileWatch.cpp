#include "platform/linux/FileWatch.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace skyflare {

namespace {

constexpr int pauseMs = 250; // in which the kernel gathers what follows
constexpr std::uint32_t changes = IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVED_TO;

Error watchError(const std::filesystem::path &folder, int code)
{
    return {"file watch", code,
            "cannot watch " + folder.string() + ": " + std::generic_category().message(code)};
}

} // namespace

Result<std::unique_ptr<FileWatch>> FileWatch::start(const std::filesystem::path &folder, std::string prefix,
                                                    std::function<void()> changed)
{
    std::unique_ptr<FileWatch> made(new FileWatch(std::move(prefix), std::move(changed)));
    if (made->events_.descriptor < 0 || made->end_.descriptor < 0 ||
        inotify_add_watch(made->events_.descriptor, folder.c_str(), changes) < 0)
        return watchError(folder, errno);
    made->thread_ = std::thread([watch = made.get()] { watch->watch(); });
    return made;
}

FileWatch::FileWatch(std::string prefix, std::function<void()> changed)
    : events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      end_(eventfd(0, EFD_CLOEXEC)),
      prefix_(std::move(prefix)),
      changed_(std::move(changed))
{
}

FileWatch::~FileWatch()
{
    if (!thread_.joinable())
        return;
    eventfd_write(end_.descriptor, 1);
    thread_.join();
}

void FileWatch::watch()
{
    pthread_setname_np(pthread_self(), "file watch");
    while (waitForEvents()) {
        if (readEvents())
            changed_();
        pollfd end{end_.descriptor, POLLIN, 0};
        poll(&end, 1, pauseMs);
    }
}

/// False when it is time to end.
bool FileWatch::waitForEvents() const
{
    std::array<pollfd, 2> waiting{{{events_.descriptor, POLLIN, 0}, {end_.descriptor, POLLIN, 0}}};
    constexpr int forEver = -1;
    while (poll(waiting.data(), waiting.size(), forEver) < 0 && errno == EINTR) {
    }
    return (waiting[1].revents & POLLIN) == 0;
}

/// Takes all that are there. Whether one was about our files.
bool FileWatch::readEvents() const
{
    bool isOurs = false;
    alignas(inotify_event) std::array<char, 16384> room{};
    ssize_t size = 0;
    while ((size = read(events_.descriptor, room.data(), room.size())) > 0) {
        const std::string_view all(room.data(), static_cast<std::size_t>(size));
        for (std::size_t at = 0; at < all.size();) {
            inotify_event event{};
            std::memcpy(&event, all.data() + at, sizeof event);
            const std::string_view name = all.substr(at + sizeof event, event.len);
            isOurs = isOurs || name.starts_with(prefix_) || (event.mask & IN_Q_OVERFLOW) != 0;
            at += sizeof event + event.len;
        }
    }
    return isOurs;
}

} // namespace skyflare
