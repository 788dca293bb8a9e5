#pragma once

#include "platform/base/Console.h"
#include "platform/base/PropertyList.h"

#include <filesystem>
#include <functional>
#include <span>
#include <string>

namespace skyflare {

/// A property list that a deployer may have put in the place of ours: the first sound one of `folders`,
/// whole; empty where there is none. One that is damaged or cannot be read counts as missing.
///
/// @param folders  the one that goes before the others first
/// @param report  is told of each that cannot be used, and why
PropertyList::Dictionary
readDeploymentFile(std::span<const std::filesystem::path> folders, const std::string &name,
                   const std::function<void(const std::filesystem::path &, const std::string &why)> &report);

/// The same for those who tell the user: one line for each that cannot be used.
PropertyList::Dictionary readDeploymentFile(std::span<const std::filesystem::path> folders,
                                            const std::string &name, Console &console);

} // namespace skyflare
