#include "platform/base/DeploymentFile.h"

#include "platform/base/Files.h"

#include <cerrno>

namespace skyflare {

PropertyList::Dictionary
readDeploymentFile(std::span<const std::filesystem::path> folders, const std::string &name,
                   const std::function<void(const std::filesystem::path &, const std::string &why)> &report)
{
    for (const auto &folder : folders) {
        const auto bytes = readFile(folder / name);
        if (!bytes && (bytes.error().code == ENOENT || bytes.error().code == ENOTDIR))
            continue;
        const auto list = bytes ? PropertyList::parse(*bytes) : Result<PropertyList>(bytes.error());
        if (list && list->as<PropertyList::Dictionary>())
            return *list->as<PropertyList::Dictionary>();
        report(folder / name, list ? "not a dictionary" : list.error().message);
    }
    return {};
}

PropertyList::Dictionary readDeploymentFile(std::span<const std::filesystem::path> folders,
                                            const std::string &name, Console &console)
{
    return readDeploymentFile(folders, name,
                              [&console](const std::filesystem::path &file, const std::string &why) {
                                  console.reportLine(file.string() + " cannot be used: " + why);
                              });
}

} // namespace skyflare
