#include "collector/ServedSettings.h"

#include "platform/base/Files.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace skyflare {

namespace {

constexpr std::size_t mostBytes = 65536; // an engine reads no more

bool isScalar(const nlohmann::json &value)
{
    return value.is_primitive() && !value.is_null();
}

} // namespace

Result<> ServedSettings::load()
{
    if (file_.empty())
        return {};
    const auto bytes = readFile(file_);
    if (!bytes)
        return bytes.error();
    const auto wrong = [this](const std::string &why) {
        return Error{"settings", 1, file_.string() + " " + why, {{"path", file_.string()}}};
    };
    if (bytes->size() > mostBytes)
        return wrong("is longer than " + std::to_string(mostBytes) + " bytes");
    const auto json = nlohmann::json::parse(*bytes, nullptr, false);
    if (!json.is_object() || !std::ranges::all_of(json, isScalar))
        return wrong("is no JSON object of setting keys with numbers, switches or texts");
    const std::scoped_lock lock(mutex_);
    text_ = json.dump();
    return {};
}

std::optional<std::string> ServedSettings::text() const
{
    const std::scoped_lock lock(mutex_);
    return text_;
}

} // namespace skyflare
