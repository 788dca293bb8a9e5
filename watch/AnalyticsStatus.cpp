#include "watch/AnalyticsStatus.h"

#include "analytics/upload/UploadHost.h"
#include "platform/base/Text.h"
#include "watch/AnalyticsEventText.h"

#include <algorithm>
#include <cstdio>

namespace skyflare {

namespace {

std::string counted(std::int64_t count, const char *one, const char *many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string onOff(bool isOn)
{
    return isOn ? "on" : "off";
}

std::string sizeText(std::uintmax_t bytes)
{
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%.1f kB", static_cast<double>(bytes) / 1000);
    return {text, static_cast<std::size_t>(length)};
}

std::string waitingText(const MeasurementStatus &database)
{
    std::string text = "Waiting:         " + counted(database.waitingEvents, "event", "events");
    if (database.oldestEvent && database.newestEvent)
        text += ", from " + momentText(*database.oldestEvent) + " to " + momentText(*database.newestEvent);
    return text + "; " + counted(database.waitingBundles, "bundle", "bundles") + " with " +
           counted(database.bundledEvents, "event", "events") + "\n";
}

std::string todayText(const APMDailyCounts &counts)
{
    return "Today:           " + counted(counts.eventsCount, "event", "events") + ", " +
           std::to_string(counts.publicEventsCount) + " of them public; " +
           counted(counts.errorEventsCount, "error event", "error events") + "; " +
           std::to_string(counts.realtimeDCUEventsCount) + " in real time\n";
}

std::string sendingText(const AnalyticsStatus &status)
{
    const auto destination = status.destination();
    const std::string &settingsHost = status.options.configurationHost;
    const std::string staying =
        settingsHost.empty() ? "nothing leaves this device" : "no event leaves this device";
    return "Sending:         " +
           (destination ? "to " + *destination : staying + ", because " + destination.error().message) +
           (settingsHost.empty() ? "" : "; settings are asked of " + validUtf8(settingsHost)) + "\n";
}

std::string propertiesText(const std::vector<APMUserAttribute> &attributes)
{
    std::string text = attributes.empty() ? "User properties: none\n" : "User properties:\n";
    for (const APMUserAttribute &attribute : attributes)
        text += "    " + nameText(attribute.name) + " = " + valueText(attribute.value) + ", set by " +
                nameText(attribute.origin) + " at " + momentText(attribute.setTimestamp) + "\n";
    return text;
}

std::string ledgerText(const AnalyticsStatus &status, const EventTally &ledger)
{
    std::string text = "Ledger, since the database was first made:\n";
    for (const std::string &line : ledger.lines())
        text += "    " + line + "\n";
    if (ledger.underWay() > 0)
        text += "    (" + counted(ledger.underWay(), "event is", "events are") +
                " under way, or went with a program that was killed)\n";
    const auto balance = status.balance();
    return text + (balance ? "It balances against the rows.\n"
                           : "It does not balance. " + validUtf8(balance.error().message) + "\n");
}

} // namespace

Result<> AnalyticsStatus::balance() const
{
    if (!database)
        return {};
    // What is under way in another process cannot be seen from here: only that it is not less than nothing.
    const auto underWay = std::max<std::int64_t>(database->ledger.underWay(), 0);
    return database->ledger.balance({underWay, database->waitingEvents, database->bundledEvents});
}

std::string AnalyticsStatus::whyCollection() const
{
    if (options.collectionDeactivated)
        return "FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED is set in Info.plist";
    if (collectionChoice)
        return "it was switched " + onOff(*collectionChoice) + " last";
    return options.collectionEnabled ? "nothing says otherwise"
                                     : "FIREBASE_ANALYTICS_COLLECTION_ENABLED is false in Info.plist";
}

Result<std::string> AnalyticsStatus::destination() const
{
    const auto no = [](const std::string &why) { return Error{"analytics", 0, why}; };
    if (options.collectionHost.empty())
        return no("no host is set");
    const auto host = UploadHost::parse(options.collectionHost);
    if (!host)
        return no("MIPEME_ANALYTICS_COLLECTION_HOST in Info.plist cannot be used: " + host.error().message);
    if (options.appID.empty())
        return no("MIPEME_APP_ID in MipemeService-Info.plist is empty");
    return host->url("");
}

APMDailyCounts AnalyticsStatus::countsOfToday() const
{
    return database && database->dailyCounts.day == today ? database->dailyCounts
                                                          : APMDailyCounts{.day = today};
}

std::string statusText(const AnalyticsStatus &status)
{
    std::string text = "Database:        " + validUtf8(status.databasePath.string());
    if (status.database)
        text += ", " + sizeText(status.database->fileBytes) + ", " +
                (status.isSound() ? "sound" : "damaged: " + skyflare::quoted(status.database->integrity)) +
                "\n" + waitingText(*status.database) + todayText(status.countsOfToday());
    else
        text += "\n                 There is none yet: nothing has been recorded.\n";
    text += "Collection:      " + onOff(status.isCollectionOn()) + ", because " + status.whyCollection() +
            "\n" + sendingText(status) + "App instance id: " +
            (status.appInstanceID ? skyflare::quoted(*status.appInstanceID) : "none yet") +
            "\nDebug mode:      " + onOff(status.modes.debugMode) +
            "\nVerbose logging: " + onOff(status.modes.verboseLogging) + "\n";
    if (status.database)
        text += propertiesText(status.database->userAttributes) + ledgerText(status, status.database->ledger);
    return text;
}

} // namespace skyflare
