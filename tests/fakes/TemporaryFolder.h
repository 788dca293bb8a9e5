#pragma once

#include <system_error>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace skyflare {

/// A new, empty folder that goes, with all that is in it, when this ends.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path &in = std::filesystem::temp_directory_path())
    {
        std::string name = (in / "skyflare-test-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder could be made: " + name);
        path_ = name;
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path &path() const { return path_; }
    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path &name) const
    {
        return path_ / name;
    }
    /// Writes a file, in new folders where it needs them.
    void write(const std::filesystem::path &name, std::string_view text) const
    {
        std::filesystem::create_directories((path_ / name).parent_path());
        if (!(std::ofstream(path_ / name, std::ios::binary) << text << std::flush))
            throw std::runtime_error("cannot write " + (path_ / name).string());
    }

private:
    std::filesystem::path path_;
};

/// Where nothing has to wait for a disk, if there is such a place.
inline std::filesystem::path memoryFolder()
{
    const std::filesystem::path memory = "/dev/shm";
    return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

} // namespace skyflare
