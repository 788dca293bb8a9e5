#include "platform/linux/MachineFacts.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace skyflare {

namespace {

constexpr std::size_t longestFact = 100; // bytes

/// What a file of one line says: without its end, be that a line's or a NUL, in valid UTF-8.
std::string firstLine(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text(longestFact, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    text.resize(std::min(text.find_first_of(std::string_view("\0\n", 2)), text.size()));
    text.erase(text.find_last_not_of(' ') + 1);
    return validUtf8(text);
}

/// os-release(5): NAME=value, the value bare or in quotation marks. Those that are asked for hold no escapes.
std::string osReleaseValue(const std::filesystem::path &root, std::string_view name)
{
    for (const char *file : {"etc/os-release", "usr/lib/os-release"}) {
        std::ifstream stream(root / file);
        for (std::string line; std::getline(stream, line);) {
            if (!line.starts_with(name) || line.size() <= name.size() || line[name.size()] != '=')
                continue;
            std::string value = line.substr(name.size() + 1, longestFact);
            std::erase_if(value, [](char character) { return character == '"' || character == '\''; });
            return validUtf8(value);
        }
        if (stream.eof())
            break; // the first file that is there holds
    }
    return {};
}

std::string osVersion(const std::filesystem::path &root)
{
    const std::string id = osReleaseValue(root, "ID");
    const std::string version = osReleaseValue(root, "VERSION_ID");
    return id.empty() || version.empty() ? id : id + " " + version;
}

/// What some makers leave in the place of a name.
bool isFiller(std::string_view name)
{
    constexpr std::array<std::string_view, 6> fillers{"To Be Filled By O.E.M.", "To be filled by O.E.M.",
                                                      "System Product Name",    "System manufacturer",
                                                      "Default string",         "None"};
    return name.empty() || std::ranges::find(fillers, name) != fillers.end();
}

std::string deviceModel(const std::filesystem::path &root)
{
    const std::string product = firstLine(root / "sys/class/dmi/id/product_name");
    if (isFiller(product))
        return firstLine(root / "proc/device-tree/model");
    const std::string vendor = firstLine(root / "sys/class/dmi/id/sys_vendor");
    return isFiller(vendor) ? product : vendor + " " + product;
}

std::string language()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(variable);
        if (!value || !*value)
            continue;
        std::string name = validUtf8(value);
        name.resize(std::min({name.find_first_of(".@"), name.size(), longestFact}));
        std::ranges::replace(name, '_', '-');
        return name == "C" || name == "POSIX" ? std::string() : name;
    }
    return {};
}

} // namespace

MachineFacts MachineFacts::read(const std::filesystem::path &root)
{
    return {.osVersion = skyflare::osVersion(root),
            .deviceModel = skyflare::deviceModel(root),
            .language = skyflare::language()};
}

} // namespace skyflare
