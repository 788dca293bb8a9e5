#include "platform/cloud/RemoteConfigCache.h"

#include "platform/base/Files.h"

#include <nlohmann/json.hpp>
#include <system_error>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

namespace skyflare {

namespace {

constexpr std::uintmax_t largestFile = 1U << 20U; // an answer's 64 KiB, and what escaping adds to them

} // namespace

Result<std::optional<RemoteConfigAnswer>> RemoteConfigCache::load() const
{
    std::error_code failed;
    if (std::filesystem::file_size(file_, failed) > largestFile && !failed)
        return Error{"remote configuration", 2, file_.string() + " is too large"};
    const auto bytes = readFile(file_);
    if (!bytes && bytes.error().code == ENOENT)
        return std::optional<RemoteConfigAnswer>();
    if (!bytes)
        return bytes.error();
    const auto json = nlohmann::json::parse(bytes->begin(), bytes->end(), nullptr, false);
    constexpr std::array texts{"url", "etag", "values"};
    const bool isSound =
        json.is_object() &&
        std::ranges::all_of(texts,
                            [&](const char *key) { return json.contains(key) && json[key].is_string(); }) &&
        json.contains("fetchedAt") && json["fetchedAt"].is_number();
    if (!isSound)
        return Error{"remote configuration", 2, file_.string() + " is damaged"};
    return std::optional(RemoteConfigAnswer{.url = json["url"].get<std::string>(),
                                            .etag = json["etag"].get<std::string>(),
                                            .fetchedAt = json["fetchedAt"].get<double>(),
                                            .values = json["values"].get<std::string>()});
}

Result<> RemoteConfigCache::store(const RemoteConfigAnswer &answer) const
{
    const nlohmann::json json{{"url", answer.url},
                              {"etag", answer.etag},
                              {"fetchedAt", answer.fetchedAt},
                              {"values", answer.values}};
    // Deliberate: bytes that are no UTF-8, such as an entity tag may have, are replaced; such a tag fits
    // nothing.
    const std::string text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return replaceFile(file_, std::span(reinterpret_cast<const std::uint8_t *>(text.data()), text.size()));
}

} // namespace skyflare
