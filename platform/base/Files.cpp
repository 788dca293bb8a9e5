#include "platform/base/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace skyflare {

namespace fs = std::filesystem;

namespace {

/// An open file, closed when this ends.
class Descriptor {
public:
    Descriptor(const fs::path &path, int flags, FileReaders readers = FileReaders::Usual)
        : number_(::open(path.c_str(), flags | O_CLOEXEC, readers == FileReaders::Usual ? 0666 : 0600))
    {
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (isOpen())
            ::close(number_);
    }

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }
    /// Some file systems tell only now that a write has failed.
    [[nodiscard]] bool closes() { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

/// A name beside `path` that is short whatever the length of its own, and new to this process.
fs::path temporaryName(const fs::path &folder)
{
    static std::atomic<unsigned> count = 0;
    return folder / (".skyflare-" + std::to_string(::getpid()) + "-" + std::to_string(count++) + ".tmp");
}

bool writeAll(int number, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(number, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

/// Writes a new file, and waits until the disk has it. Leaves nothing behind when it fails.
Result<> writeNew(const fs::path &path, std::span<const std::uint8_t> bytes, Durability durability,
                  FileReaders readers)
{
    Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, readers);
    if (!file.isOpen())
        return fileError("cannot create", path, errno);
    const auto isSafe = [&] { return durability == Durability::None || ::fsync(file.number()) == 0; };
    if (writeAll(file.number(), bytes) && isSafe() && file.closes())
        return {};
    const int code = errno;
    ::unlink(path.c_str());
    return fileError("cannot write", path, code);
}

} // namespace

Error fileError(std::string_view what, const fs::path &path, int code)
{
    return {"file",
            code,
            std::string(what) + " " + path.string() + ": " + std::generic_category().message(code),
            {{"path", path.string()}}};
}

Result<> syncFolder(const fs::path &folder)
{
    const Descriptor opened(folder, O_RDONLY | O_DIRECTORY);
    if (!opened.isOpen())
        return fileError("cannot open", folder, errno);
    // EINVAL: a file system that cannot sync a folder, and has no need to.
    if (::fsync(opened.number()) != 0 && errno != EINVAL)
        return fileError("cannot sync", folder, errno);
    return {};
}

Result<Bytes> readFile(const fs::path &path)
{
    const Descriptor file(path, O_RDONLY);
    if (!file.isOpen())
        return fileError("cannot read", path, errno);
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return fileError("cannot read", path, errno);

    constexpr std::size_t step = 65536; // what has no size of its own, a pipe, is read in such steps
    Bytes bytes(static_cast<std::size_t>(status.st_size > 0 ? status.st_size : 0) + 1);
    std::size_t size = 0;
    while (true) {
        if (size == bytes.size())
            bytes.resize(size + step);
        const ssize_t got = ::read(file.number(), bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return fileError("cannot read", path, errno);
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    bytes.resize(size);
    return bytes;
}

Result<> replaceFile(const fs::path &path, std::span<const std::uint8_t> bytes, Durability durability,
                     FileReaders readers)
{
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure)
        return fileError("cannot make the folder", folder, failure.value());

    const fs::path temporary = temporaryName(folder);
    ::unlink(temporary.c_str()); // of a killed process that had our number
    if (auto written = writeNew(temporary, bytes, durability, readers); !written)
        return written;
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return fileError("cannot replace", path, code);
    }
    return durability == Durability::None ? Result<>() : syncFolder(folder);
}

} // namespace skyflare
