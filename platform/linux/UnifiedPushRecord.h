#pragma once

#include "platform/base/RandomSource.h"
#include "platform/base/UserDefaults.h"

#include <filesystem>
#include <optional>
#include <string>

namespace skyflare {

/// What is kept of UnifiedPush between two starts, as a property list: our token and who distributes.
///
/// Threads: main. Borrows the console.
class UnifiedPushRecord {
public:
    UnifiedPushRecord(std::filesystem::path file, Console &console) : defaults_(std::move(file), console) {}

    /// By which distributors know us (a UUID, RFC 4122, version 4). Nothing before it was ever needed.
    [[nodiscard]] std::optional<std::string> token() const;
    /// The same, made and kept if need be.
    Result<std::string> makeToken(RandomSource &random);

    /// The distributor that we last registered with; empty: none.
    [[nodiscard]] std::string distributor() const;
    void setDistributor(const std::string &name);

private:
    UserDefaults defaults_;
};

} // namespace skyflare
