#include "analytics/pipeline/APMAnalyticsOptions.h"

#include "analytics/model/LogText.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <variant>

namespace skyflare {

namespace {

using Options = APMAnalyticsOptions;
using Field = std::variant<bool Options::*, std::optional<bool> Options::*, std::string Options::*>;
enum class OptionsFile { Info, MipemeServiceInfo };

struct OptionRow {
    std::string_view key;
    OptionsFile file;
    Field field;
};

constexpr std::array<OptionRow, 15> optionRows{{
    {"MIPEME_APP_ID", OptionsFile::MipemeServiceInfo, &Options::appID},
    {"MIPEME_ANALYTICS_COLLECTION_HOST", OptionsFile::Info, &Options::collectionHost},
    {"MIPEME_ANALYTICS_CONFIGURATION_HOST", OptionsFile::Info, &Options::configurationHost},
    {"FIREBASE_ANALYTICS_COLLECTION_ENABLED", OptionsFile::Info, &Options::collectionEnabled},
    {"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", OptionsFile::Info, &Options::collectionDeactivated},
    {"FirebaseAutomaticScreenReportingEnabled", OptionsFile::Info, &Options::automaticScreenReportingEnabled},
    {"MIPEME_ANALYTICS_DEFAULT_ALLOW_AD_STORAGE", OptionsFile::Info, &Options::allowAdStorage},
    {"MIPEME_ANALYTICS_DEFAULT_ALLOW_ANALYTICS_STORAGE", OptionsFile::Info, &Options::allowAnalyticsStorage},
    {"MIPEME_ANALYTICS_DEFAULT_ALLOW_AD_USER_DATA", OptionsFile::Info, &Options::allowAdUserData},
    {"MIPEME_ANALYTICS_DEFAULT_ALLOW_AD_PERSONALIZATION_SIGNALS", OptionsFile::Info,
     &Options::allowAdPersonalizationSignals},
    {"MIPEME_ANALYTICS_IDFV_COLLECTION_ENABLED", OptionsFile::Info, &Options::idfvCollectionEnabled},
    {"MIPEME_ANALYTICS_REGISTRATION_WITH_AD_NETWORK_ENABLED", OptionsFile::Info,
     &Options::registrationWithAdNetworkEnabled},
    {"MIPEME_ANALYTICS_DEFERRED_DEEP_LINK_ENABLED", OptionsFile::Info, &Options::deferredDeepLinkEnabled},
    {"MIPEME_ANALYTICS_SGTM_UPLOAD_ENABLED", OptionsFile::Info, &Options::sgtmUploadEnabled},
    {"MIPEME_ANALYTICS_TCF_DATA_ENABLED", OptionsFile::Info, &Options::tcfDataEnabled},
}};

constexpr std::string_view configurationKey = "FIREBASE_ANALYTICS_CONFIGURATION";

using Level = APMMonitor::Level;
constexpr LogText wrongType{Level::Warning, 23001,
                            "Option has a value of the wrong type and is passed over. Key"};
// Deliberate: no warning. It is how the program is shipped, and who deploys it looks with verbose
// logging.
constexpr LogText emptyAppID{
    Level::Info, 23002,
    "Mipeme App ID from MipemeService-Info.plist is empty. Please, define MIPEME_APP_ID in "
    "MipemeService-Info.plist for Analytics to work reliably. See analytics/pipeline/README.md"};

/// True and false, also as the numbers and words that people write into such files by hand.
std::optional<bool> switchIn(const PropertyList &value)
{
    if (const bool *flag = value.as<bool>())
        return *flag;
    std::string word;
    if (const auto *number = value.as<std::int64_t>())
        word = std::to_string(*number);
    else if (const auto *text = value.as<std::string>())
        word = *text;
    // As a table: what a locale thinks of upper and lower case is of no concern here.
    constexpr std::array<std::string_view, 6> yes{"YES", "Yes", "yes", "TRUE", "true", "1"};
    constexpr std::array<std::string_view, 6> no{"NO", "No", "no", "FALSE", "false", "0"};
    const bool isYes = std::ranges::find(yes, word) != yes.end();
    return isYes || std::ranges::find(no, word) != no.end() ? std::optional(isYes) : std::nullopt;
}

/// False if the value is of another type.
bool assign(const PropertyList &value, Options &options, const Field &field)
{
    if (const auto *text = std::get_if<std::string Options::*>(&field)) {
        if (const auto *given = value.as<std::string>())
            options.*(*text) = *given;
        return value.as<std::string>() != nullptr;
    }
    const auto given = switchIn(value);
    if (!given)
        return false;
    if (const auto *flag = std::get_if<bool Options::*>(&field))
        options.*(*flag) = *given;
    else
        options.*std::get<std::optional<bool> Options::*>(field) = given;
    return true;
}

void apply(const PropertyList::Dictionary &values, std::optional<OptionsFile> file, Options &options,
           APMMonitor &monitor)
{
    for (const OptionRow &row : optionRows) {
        const auto found = values.find(row.key);
        if (found == values.end() || (file && row.file != *file))
            continue;
        if (!assign(found->second, options, row.field))
            writeLog(monitor, wrongType, row.key);
    }
}

} // namespace

APMAnalyticsOptions APMAnalyticsOptions::of(const Deployment &deployment, APMMonitor &monitor)
{
    APMAnalyticsOptions options;
    apply(deployment.mipemeServiceInfo, OptionsFile::MipemeServiceInfo, options, monitor);
    const PropertyList::Dictionary &info = deployment.info;
    apply(info, OptionsFile::Info, options, monitor);
    if (const auto found = info.find(configurationKey); found != info.end()) {
        if (const auto *configuration = found->second.as<PropertyList::Dictionary>())
            apply(*configuration, {}, options, monitor); // it may say everything
        else
            writeLog(monitor, wrongType, configurationKey);
    }
    if (options.appID.empty())
        writeLog(monitor, emptyAppID);
    return options;
}

bool isCollectionEnabled(const APMAnalyticsOptions &options, std::optional<bool> choice)
{
    return !options.collectionDeactivated && choice.value_or(options.collectionEnabled);
}

} // namespace skyflare
