#include "platform/base/AppInfo.h"

#include "platform/base/DeploymentFile.h"

#include <array>
#include <string_view>

namespace skyflare {

namespace {

constexpr const char *infoFileName = "Info.plist";
constexpr std::string_view shortVersionKey = "CFBundleShortVersionString";

struct InfoRow {
    std::string_view key;
    std::string AppInfo::*field;
};

constexpr std::array<InfoRow, 3> infoRows{{
    {"SkyflareRemoteConfigURL", &AppInfo::remoteConfigURL},
    {"SkyflareStorePage", &AppInfo::storePage},
    {"SkyflareSupportAddress", &AppInfo::supportAddress},
}};

std::string textIn(const PropertyList::Dictionary &values, std::string_view key)
{
    const auto found = values.find(key);
    const auto *text = found == values.end() ? nullptr : found->second.as<std::string>();
    return text ? *text : std::string();
}

} // namespace

AppInfo AppInfo::load(std::span<const std::filesystem::path> folders, Console &console)
{
    AppInfo info;
    const PropertyList::Dictionary values = readDeploymentFile(folders, infoFileName, console);
    for (const InfoRow &row : infoRows)
        info.*row.field = textIn(values, row.key);
    if (!folders.empty())
        info.shortVersion =
            textIn(readDeploymentFile(folders.subspan(1), infoFileName, console), shortVersionKey);
    return info;
}

} // namespace skyflare
