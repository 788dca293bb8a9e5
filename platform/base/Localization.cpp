#include "platform/base/Localization.h"

#include "platform/base/Files.h"
#include "platform/base/Result.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace skyflare {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view englishLanguage = "en";

/// "tr_TR.UTF-8@euro" without codeset and modifier; nothing if it could not be a part of a file's name.
std::optional<std::string> localeName(std::string_view value)
{
    const std::string_view name = value.substr(0, value.find_first_of(".@"));
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
    if (name.empty() || name.find_first_not_of(allowed) != name.npos)
        return std::nullopt;
    if (name == "C" || name == "POSIX")
        return std::string(englishLanguage);
    return std::string(name);
}

std::string_view valueOfFirst(std::span<const char *const> names,
                              const std::function<const char *(const char *)> &variable)
{
    for (const char *name : names)
        if (const char *value = variable(name); value && *value)
            return value;
    return {};
}

using Texts = std::map<std::string, std::string, std::less<>>;

Result<Texts> readTable(const fs::path &file)
{
    const auto bytes = readFile(file);
    if (!bytes)
        return bytes.error();
    const auto json = nlohmann::json::parse(bytes->begin(), bytes->end(), nullptr, false);
    const bool isTable =
        json.is_object() && std::ranges::all_of(json, [](const auto &value) { return value.is_string(); });
    if (!isTable)
        return Error{"localization", 0, file.string() + " is no JSON object of texts"};
    Texts texts;
    for (const auto &[key, value] : json.items())
        texts.emplace(key, value.template get<std::string>());
    return texts;
}

std::mutex sharedMutex;

std::shared_ptr<const Localization> &sharedPlace()
{
    static std::shared_ptr<const Localization> place = std::make_shared<const Localization>();
    return place;
}

std::shared_ptr<const Localization> sharedNow()
{
    const std::scoped_lock lock(sharedMutex);
    return sharedPlace();
}

} // namespace

std::vector<std::string> preferredLanguages(const std::function<const char *(const char *)> &variable)
{
    constexpr std::array<const char *, 3> localeVariables{"LC_ALL", "LC_MESSAGES", "LANG"};
    const std::string_view locale = valueOfFirst(localeVariables, variable);
    const char *const list = variable("LANGUAGE");
    std::vector<std::string> languages;
    // As with other programs: "LC_ALL=C program" is English, whatever else is set.
    std::string_view rest = list && locale != "C" && locale != "POSIX" ? list : "";
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        if (auto name = localeName(rest.substr(0, end)))
            languages.push_back(std::move(*name));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (auto name = localeName(locale))
        languages.push_back(std::move(*name));
    return languages;
}

Localization Localization::load(const fs::path &folder, std::span<const std::string> languages,
                                Console &console)
{
    const auto read = [&](const std::string &language) -> std::optional<Table> {
        const fs::path file = folder / (language + ".json");
        auto table = readTable(file);
        if (table)
            return std::move(*table);
        const bool isMissing = table.error().domain == "file" && table.error().code == ENOENT;
        if (!isMissing || language == englishLanguage)
            console.reportLine("The texts cannot be used: " + table.error().message);
        return std::nullopt;
    };
    Localization localization;
    if (auto english = read(std::string(englishLanguage)))
        localization.english_ = std::move(*english);
    for (const std::string &language : languages) {
        const std::string base = language.substr(0, language.find_first_of("_-"));
        if (base == englishLanguage)
            return localization;
        for (const std::string &name : {language, base}) {
            if (auto texts = read(name)) {
                localization.language_ = name;
                localization.texts_ = std::move(*texts);
                return localization;
            }
            if (language == base)
                break;
        }
    }
    return localization;
}

std::string Localization::text(std::string_view key) const
{
    for (const Table *table : {&texts_, &english_})
        if (const auto found = table->find(key); found != table->end())
            return found->second;
    return std::string(key);
}

void Localization::setShared(Localization localization)
{
    auto place = std::make_shared<const Localization>(std::move(localization));
    const std::scoped_lock lock(sharedMutex);
    std::swap(sharedPlace(), place);
}

Localization Localization::shared()
{
    return *sharedNow();
}

std::string localized(std::string_view key)
{
    return sharedNow()->text(key);
}

} // namespace skyflare
