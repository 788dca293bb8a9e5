#pragma once

#include <filesystem>

namespace skyflare {

/// Where this user's files of Skyflare are. Nobody has made the folders yet.
struct UserDirectories {
    std::filesystem::path data;     ///< the photo store
    std::filesystem::path config;   ///< settings
    std::filesystem::path state;    ///< what need not move to another machine
    std::filesystem::path cache;    ///< what can be made again
    std::filesystem::path pictures; ///< where other programs look for the photos

    /// By the XDG base directories and user directories. A variable that holds no absolute path counts
    /// as not set, as that standard asks.
    static UserDirectories standard();

    /// All of them below one folder.
    static UserDirectories under(const std::filesystem::path &folder);
};

} // namespace skyflare
