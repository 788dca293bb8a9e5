#pragma once

#include "platform/base/Result.h"

#include <filesystem>
#include <optional>
#include <string>

namespace skyflare {

/// The last good answer of a remote configuration's server.
struct RemoteConfigAnswer {
    std::string url;
    std::string etag;     ///< empty: none
    double fetchedAt = 0; ///< seconds since 1970
    std::string values;   ///< as the server has sent it
};

/// Keeps that answer in a file, between one run of the program and the next.
///
/// Threads: any, one at a time.
class RemoteConfigCache {
public:
    explicit RemoteConfigCache(std::filesystem::path file) : file_(std::move(file)) {}

    /// Nothing if there is no file yet; an error if it is damaged.
    [[nodiscard]] Result<std::optional<RemoteConfigAnswer>> load() const;
    Result<> store(const RemoteConfigAnswer &answer) const;

private:
    const std::filesystem::path file_;
};

} // namespace skyflare
