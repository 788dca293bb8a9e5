#pragma once

#include "platform/base/Result.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

namespace skyflare {

/// The deployer's file of settings, as the engines that ask for their configuration get it.
///
/// Threads: any.
class ServedSettings {
public:
    /// @param file  a JSON object of setting keys and values; empty: none is served
    explicit ServedSettings(std::filesystem::path file) : file_(std::move(file)) {}

    /// Reads the file, anew. After an error what had been read before is served on.
    Result<> load();

    /// Nothing: no settings are served.
    [[nodiscard]] std::optional<std::string> text() const;

private:
    const std::filesystem::path file_;
    mutable std::mutex mutex_;
    std::optional<std::string> text_;
};

} // namespace skyflare
