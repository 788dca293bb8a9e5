#include "platform/base/Deployment.h"

#include "platform/base/Files.h"

#include <cerrno>
#include <optional>
#include <string>

namespace skyflare {

namespace {

using Folders = std::span<const std::filesystem::path>;

/// Nothing where there is no such file, or none that can be used.
std::optional<PropertyList::Dictionary> readList(const std::filesystem::path &file, Console &console)
{
    const auto bytes = readFile(file);
    if (!bytes && (bytes.error().code == ENOENT || bytes.error().code == ENOTDIR))
        return {};
    const auto list = bytes ? PropertyList::parse(*bytes) : Result<PropertyList>(bytes.error());
    if (list && list->as<PropertyList::Dictionary>())
        return *list->as<PropertyList::Dictionary>();
    console.reportLine(file.string() +
                       " cannot be used: " + (list ? "not a dictionary" : list.error().message));
    return {};
}

PropertyList::Dictionary readFirst(Folders folders, const char *name, Console &console)
{
    for (const auto &folder : folders)
        if (auto list = readList(folder / name, console))
            return *std::move(list);
    return {};
}

} // namespace

Deployment Deployment::read(Folders folders, Console &console)
{
    constexpr const char *info = "Info.plist";
    Deployment deployment{.info = {},
                          .ownInfo = {},
                          .mipemeServiceInfo = readFirst(folders, "MipemeService-Info.plist", console)};
    if (folders.empty())
        return deployment;
    const auto deployers = readList(folders.front() / info, console);
    deployment.ownInfo = readFirst(folders.subspan(1), info, console);
    deployment.info = deployers.value_or(deployment.ownInfo);
    return deployment;
}

} // namespace skyflare
