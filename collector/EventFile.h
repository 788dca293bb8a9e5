#pragma once

#include "platform/base/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace skyflare {

/// Which file it is in its file system, whatever it is called by now. Not the device: its number may be
/// another one after the machine's next start.
struct FileIdentity {
    std::int64_t inode = 0;
    /// Nanoseconds since 1970, for numbers are used again; 0 where the file system does not say.
    std::int64_t born = 0;

    bool operator==(const FileIdentity &) const = default;
};

/// The file that events are written to, always at its end. One process holds it at a time.
///
/// Threads: one.
class EventFile {
public:
    /// Opens it, or makes it with its folder, and holds it against other processes.
    static Result<EventFile> open(const std::filesystem::path &path);
    /// Which file stands at that path; nothing where none can be seen.
    static std::optional<FileIdentity> identityAt(const std::filesystem::path &path);
    /// Under which name the file stands in that folder; empty where it does not.
    static std::filesystem::path find(const std::filesystem::path &folder, const FileIdentity &identity);

    EventFile(EventFile &&other) noexcept;
    EventFile &operator=(EventFile &&other) noexcept;
    EventFile(const EventFile &) = delete;
    EventFile &operator=(const EventFile &) = delete;
    ~EventFile();

    [[nodiscard]] Result<FileIdentity> identity() const;
    [[nodiscard]] Result<std::int64_t> size() const;
    /// Whether no name is left of it, so that it goes with this object.
    [[nodiscard]] bool isDeleted() const;
    Result<> append(std::string_view lines);
    /// Waits until the disk has it.
    Result<> sync();
    /// Takes away what is behind `length`.
    Result<> cutTo(std::int64_t length);
    /// Ends a last line that somebody has left without its end.
    Result<> endLine();

private:
    std::filesystem::path path_;
    int descriptor_;

    EventFile(std::filesystem::path path, int descriptor);
    [[nodiscard]] Error error(std::string_view what) const;
};

} // namespace skyflare
