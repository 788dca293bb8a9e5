#include "collector/EventFile.h"

#include "platform/base/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace skyflare {

namespace fs = std::filesystem;

namespace {

/// Nothing, with errno set, where it cannot be said.
std::optional<FileIdentity> readIdentity(int folder, const char *path, int flags)
{
    struct statx status {};
    if (statx(folder, path, flags, STATX_INO | STATX_BTIME, &status) != 0)
        return {};
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    return FileIdentity{static_cast<std::int64_t>(status.stx_ino),
                        status.stx_btime.tv_sec * nanoseconds + status.stx_btime.tv_nsec};
}

} // namespace

Result<EventFile> EventFile::open(const fs::path &path)
{
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure)
        return fileError("cannot make the folder", folder, failure.value());
    constexpr mode_t forTheGroupToRead = 0640;
    EventFile file(path, ::open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, forTheGroupToRead));
    if (file.descriptor_ < 0)
        return file.error("cannot open");
    if (flock(file.descriptor_, LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Error{"file", errno, "another process is writing " + path.string()}
                                    : file.error("cannot lock");
    if (const auto synced = syncFolder(folder); !synced)
        return synced.error();
    return file;
}

std::optional<FileIdentity> EventFile::identityAt(const fs::path &path)
{
    return readIdentity(AT_FDCWD, path.c_str(), 0);
}

fs::path EventFile::find(const fs::path &folder, const FileIdentity &identity)
{
    std::error_code failure;
    for (fs::directory_iterator file(folder, failure), end; !failure && file != end;
         file.increment(failure)) {
        if (identityAt(file->path()) == identity)
            return file->path();
    }
    return {};
}

EventFile::EventFile(fs::path path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}

EventFile::EventFile(EventFile &&other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1))
{
}

EventFile &EventFile::operator=(EventFile &&other) noexcept
{
    std::swap(path_, other.path_);
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

EventFile::~EventFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

Result<FileIdentity> EventFile::identity() const
{
    const auto identity = readIdentity(descriptor_, "", AT_EMPTY_PATH);
    return identity ? Result<FileIdentity>(*identity) : error("cannot read");
}

Result<std::int64_t> EventFile::size() const
{
    struct stat status {};
    if (fstat(descriptor_, &status) != 0)
        return error("cannot read");
    return std::int64_t{status.st_size};
}

bool EventFile::isDeleted() const
{
    struct stat status {};
    return fstat(descriptor_, &status) == 0 && status.st_nlink == 0;
}

Result<> EventFile::append(std::string_view lines)
{
    const auto length = static_cast<off_t>(lines.size());
    while (!lines.empty()) {
        const ssize_t written = ::write(descriptor_, lines.data(), lines.size());
        if (written < 0 && errno != EINTR)
            return error("cannot write");
        lines.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    // The disk begins at once, so that the sync has less to wait for. Only a hint: it may fail.
    sync_file_range(descriptor_, lseek(descriptor_, 0, SEEK_END) - length, length, SYNC_FILE_RANGE_WRITE);
    return {};
}

Result<> EventFile::sync()
{
    if (fdatasync(descriptor_) != 0)
        return error("cannot sync");
    return {};
}

Result<> EventFile::cutTo(std::int64_t length)
{
    if (ftruncate(descriptor_, length) != 0)
        return error("cannot shorten");
    return sync();
}

Result<> EventFile::endLine()
{
    const auto length = size();
    if (!length)
        return length.error();
    char last = '\n';
    if (*length > 0 && pread(descriptor_, &last, 1, *length - 1) != 1)
        return error("cannot read");
    return last == '\n' ? Result<>() : append("\n");
}

Error EventFile::error(std::string_view what) const
{
    return fileError(what, path_, errno);
}

} // namespace skyflare
