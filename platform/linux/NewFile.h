#pragma once

#include "platform/base/Result.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace skyflare {

/// A file for the user that appears in its folder whole, under a name that nothing else has, or not at all.
///
/// Until it is published it has a hidden name; if it never is, it goes with this object.
/// Errors say in one line what the user can do.
/// Threads: one. Several of these, also in several processes, may share a folder.
class NewFile {
public:
    /// An empty file in `folder`, which is made if it is missing.
    static Result<NewFile> create(const std::filesystem::path &folder);

    NewFile(NewFile &&other) noexcept;
    NewFile &operator=(NewFile &&) = delete;
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile();

    /// Writes all of the file, dates it, and waits until the disk has it.
    Result<> write(std::span<const std::uint8_t> bytes, std::chrono::milliseconds since1970);

    /// Gives it its name: stem and extension, or "stem (2)" and so on where that is taken.
    Result<> publish(const std::string &stem, std::string_view extension);

    /// Removes files that killed processes left unpublished, more than an hour before `now`.
    static void removeLeftovers(const std::filesystem::path &folder, std::time_t now);

private:
    explicit NewFile(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::filesystem::path folder_;
    std::string hiddenName_; ///< empty once it is published
    int folderDescriptor_ = -1;
    int descriptor_ = -1;

    [[nodiscard]] Error error(int code) const;
    [[nodiscard]] int open();
    [[nodiscard]] int rename(const std::string &name);
};

} // namespace skyflare
