#include "platform/linux/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

namespace skyflare {
namespace {

constexpr std::string_view hiddenPrefix = ".skyflare-";
constexpr std::string_view hiddenSuffix = ".part";
constexpr int mostTries = 10000;

std::atomic<unsigned> nextNumber = 0;

std::string hiddenName()
{
    return std::string(hiddenPrefix) + std::to_string(getpid()) + "-" + std::to_string(nextNumber++) +
           std::string(hiddenSuffix);
}

/// 0, or the errno of what failed.
int writeAll(int descriptor, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        else if (written == 0 || errno != EINTR)
            return written == 0 ? EIO : errno;
    }
    return 0;
}

/// When a file was last touched, whatever date it carries; nothing for one that is gone.
std::optional<std::time_t> lastTouched(const std::filesystem::path &file)
{
    struct stat status {};
    if (lstat(file.c_str(), &status) != 0)
        return std::nullopt;
    return status.st_ctim.tv_sec;
}

} // namespace

Result<NewFile> NewFile::create(const std::filesystem::path &folder)
{
    NewFile file(folder);
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure)
        return file.error(failure.value());
    if (const int code = file.open(); code != 0)
        return file.error(code);
    return file;
}

NewFile::NewFile(NewFile &&other) noexcept
    : folder_(std::move(other.folder_)),
      hiddenName_(std::exchange(other.hiddenName_, {})),
      folderDescriptor_(std::exchange(other.folderDescriptor_, -1)),
      descriptor_(std::exchange(other.descriptor_, -1))
{
}

NewFile::~NewFile()
{
    if (!hiddenName_.empty())
        unlinkat(folderDescriptor_, hiddenName_.c_str(), 0);
    if (descriptor_ >= 0)
        close(descriptor_);
    if (folderDescriptor_ >= 0)
        close(folderDescriptor_);
}

int NewFile::open()
{
    folderDescriptor_ = ::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderDescriptor_ < 0)
        return errno;
    constexpr mode_t asTheUserLikes = 0666; // less the umask
    for (int i = 0; i < mostTries; ++i) {
        std::string name = hiddenName();
        descriptor_ =
            openat(folderDescriptor_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, asTheUserLikes);
        if (descriptor_ >= 0) {
            hiddenName_ = std::move(name);
            return 0;
        }
        if (errno != EEXIST)
            break;
    }
    return errno;
}

Result<> NewFile::write(std::span<const std::uint8_t> bytes, std::chrono::milliseconds since1970)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since1970);
    const std::chrono::nanoseconds rest = since1970 - seconds;
    const timespec time{seconds.count(), rest.count()};
    const timespec readAndWritten[]{time, time};
    if (const int code = writeAll(descriptor_, bytes); code != 0)
        return error(code);
    if (futimens(descriptor_, readAndWritten) != 0 || fsync(descriptor_) != 0)
        return error(errno);
    return {};
}

Result<> NewFile::publish(const std::string &stem, std::string_view extension)
{
    int code = EEXIST;
    for (int i = 1; i < mostTries && code == EEXIST; ++i) {
        const std::string number = i == 1 ? "" : " (" + std::to_string(i) + ")";
        code = rename(stem + number + std::string(extension));
    }
    if (code != 0)
        return error(code);
    hiddenName_.clear();
    fsync(folderDescriptor_); // not every file system can; the file itself is safe
    return {};
}

/// 0, or the errno; EEXIST where the name is taken.
int NewFile::rename(const std::string &name)
{
    if (renameat2(folderDescriptor_, hiddenName_.c_str(), folderDescriptor_, name.c_str(),
                  RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Network file systems cannot do that in one step, but a link never replaces anything either.
    if (linkat(folderDescriptor_, hiddenName_.c_str(), folderDescriptor_, name.c_str(), 0) != 0)
        return errno;
    unlinkat(folderDescriptor_, hiddenName_.c_str(), 0);
    return 0;
}

void NewFile::removeLeftovers(const std::filesystem::path &folder, std::time_t now)
{
    const std::time_t longAgo = now - 3600;
    std::error_code failure;
    for (std::filesystem::directory_iterator file(folder, failure), end; !failure && file != end;
         file.increment(failure)) {
        const std::string name = file->path().filename().string();
        if (name.starts_with(hiddenPrefix) && name.ends_with(hiddenSuffix) &&
            lastTouched(file->path()).value_or(longAgo) < longAgo)
            unlink(file->path().c_str());
    }
}

Error NewFile::error(int code) const
{
    const std::string where = folder_.string();
    const auto says = [code, &where](std::string message) {
        return Error{"POSIX", code, std::move(message), {{"path", where}}};
    };
    switch (code) {
    case ENOSPC:
    case EDQUOT:
        return says("no room for the photo: free some space on the disk of " + where);
    case EACCES:
    case EPERM:
    case EROFS:
        return says("the photo may not be written: allow writing to " + where);
    case ENOTDIR:
    case EEXIST:
        return says("there is no folder for the photo: move away what stands in place of " + where);
    default:
        return says("the photo was not written to " + where + ": " + std::generic_category().message(code));
    }
}

} // namespace skyflare
