#include "tests/fakes/FileFaults.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace skyflare::fileFaults {

namespace {

Kind kind = Kind::None;
long deadly = 0;
long count = 0;

bool isDeadly(bool isChange)
{
    if (kind == Kind::None || kind == Kind::ReadOnly || (kind == Kind::KillAtChange && !isChange))
        return false;
    ++count;
    return deadly > 0 && (kind == Kind::FailFromThenOn ? count >= deadly : count == deadly);
}

/// @return whether the call is to fail
bool strike(bool isChange, int code)
{
    if (!isDeadly(isChange))
        return false;
    if (kind == Kind::KillAtChange)
        std::raise(SIGKILL);
    errno = code;
    return true;
}

ssize_t writeAt(int file, const void *bytes, std::size_t size, off_t offset)
{
    if (!isDeadly(true))
        return pwrite(file, bytes, size, offset);
    const ssize_t written = pwrite(file, bytes, size / 2, offset);
    if (kind == Kind::KillAtChange)
        std::raise(SIGKILL);
    errno = ENOSPC;
    return written < 0 ? written : -1;
}

ssize_t readAt(int file, void *bytes, std::size_t size, off_t offset)
{
    return strike(false, EIO) ? -1 : pread(file, bytes, size, offset);
}

int truncate(int file, off_t size)
{
    return strike(true, EIO) ? -1 : ftruncate(file, size);
}

int sync(int file)
{
    return strike(false, EIO) ? -1 : fsync(file);
}

int openFile(const char *path, int flags, int mode)
{
    if (kind == Kind::ReadOnly && (flags & O_ACCMODE) != O_RDONLY) {
        errno = EACCES;
        return -1;
    }
    return strike(false, EMFILE) ? -1 : open(path, flags, static_cast<mode_t>(mode));
}

} // namespace

void plan(Kind newKind, long at)
{
    kind = newKind;
    deadly = at;
    count = 0;
    sqlite3_vfs *files = sqlite3_vfs_find(nullptr);
    const auto put = [files](const char *name, auto *function) {
        files->xSetSystemCall(files, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
    };
    put("pwrite", &writeAt);
    put("pwrite64", &writeAt);
    put("pread", &readAt);
    put("pread64", &readAt);
    put("ftruncate", &truncate);
    put("fsync", &sync);
    put("open", &openFile);
}

long calls()
{
    return count;
}

} // namespace skyflare::fileFaults
