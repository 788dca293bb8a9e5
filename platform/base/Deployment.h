#pragma once

#include "platform/base/Console.h"
#include "platform/base/PropertyList.h"

#include <filesystem>
#include <span>

namespace skyflare {

/// The property lists that come with the programs, and that a deployer may have put others in the place of. A
/// program reads them once, and hands them to whoever wants to know something of them.
///
/// Each file is taken whole from the first folder that has a sound one, and is empty where there is none. One
/// that is damaged or cannot be read is reported by one line and counts as missing.
/// Threads: any; a value.
struct Deployment {
    PropertyList::Dictionary info;              ///< Info.plist
    PropertyList::Dictionary ownInfo;           ///< the program's own Info.plist, whatever goes before it
    PropertyList::Dictionary mipemeServiceInfo; ///< MipemeService-Info.plist

    /// @param folders  the deployer's first, then those of the program
    static Deployment read(std::span<const std::filesystem::path> folders, Console &console);
};

} // namespace skyflare
