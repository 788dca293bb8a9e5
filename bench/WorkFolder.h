#pragma once

#include <system_error>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace skyflare::bench {

/// A new folder on the disk, which goes when this ends. In /var/tmp, which is no memory file system, or where
/// SKYFLARE_BENCH_DIR says. Empty path where none could be made.
class WorkFolder {
public:
    WorkFolder()
    {
        const char *const in = std::getenv("SKYFLARE_BENCH_DIR");
        std::string name = std::string(in ? in : "/var/tmp") + "/skyflare-bench-XXXXXX";
        if (mkdtemp(name.data()))
            path_ = name;
    }
    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;
    ~WorkFolder()
    {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path &path() const { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace skyflare::bench
