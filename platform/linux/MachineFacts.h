#pragma once

#include <filesystem>
#include <string>

namespace skyflare {

/// The machine and the system that it runs. Empty: not known.
///
/// Threads: any; a value.
struct MachineFacts {
    std::string platform = "linux";
    std::string osVersion = {};   ///< "debian 12": ID and VERSION_ID of os-release
    std::string deviceModel = {}; ///< "LENOVO 20XW", "Raspberry Pi 4 Model B Rev 1.4"
    std::string language = {};    ///< of the locale, as BCP 47 writes it: "pt-BR"; empty for "C"

    bool operator==(const MachineFacts &) const = default;

    /// Reads the system's files, and LC_ALL, LC_MESSAGES and LANG.
    /// @param root  where the system's files are
    static MachineFacts read(const std::filesystem::path &root = "/");
};

} // namespace skyflare
