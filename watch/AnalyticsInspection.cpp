#include "watch/AnalyticsInspection.h"

#include "analytics/pipeline/APMConsoleMonitor.h"
#include "analytics/pipeline/APMPersistedSuite.h"
#include "analytics/worker/DailyLimits.h"
#include "analytics/worker/MeasurementConfig.h"
#include "watch/AnalyticsEventText.h"
#include "watch/AnalyticsJson.h"

namespace skyflare {

namespace {

constexpr const char *advice =
    " (a run of skyflare-watch looks through it, and makes it anew if it is damaged)";

Error unreadable(const std::filesystem::path &database, const Error &error)
{
    return {error.domain, error.code,
            "the measurement database " + database.string() + " cannot be read: " + error.message + advice};
}

bool isMissing(const Error &error)
{
    return error.domain == "measurement" && error.code == MeasurementReader::noDatabaseYet;
}

} // namespace

std::filesystem::path AnalyticsInspection::database() const
{
    return places_.state / measurementDatabaseName;
}

void AnalyticsInspection::readSettings(AnalyticsStatus &status, APMMonitor &monitor)
{
    status.options = APMAnalyticsOptions::of(places_.deployment, monitor);
    UserDefaults suiteDefaults(places_.config / apmSuiteFile, services_.console);
    const APMPersistedSuite suite(suiteDefaults, services_.random);
    status.collectionChoice = suite.value(suiteKeys::analyticsCollection);
    status.appInstanceID = suite.value(suiteKeys::appInstanceID);

    UserDefaults configDefaults(places_.config / measurementConfigFile, services_.console);
    status.modes = decideMonitorModes({}, configDefaults);
    const auto midnightOffset = MeasurementConfig(configDefaults).keptMidnightOffset();
    status.today = dayNumber(services_.clock.secondsSince1970(), midnightOffset.value_or(0));
}

Result<> AnalyticsInspection::printStatus()
{
    APMConsoleMonitor monitor(services_.console, services_.clock, {});
    AnalyticsStatus status{.databasePath = database()};
    readSettings(status, monitor);
    const auto reader = MeasurementReader::open(database(), monitor);
    if (!reader && !isMissing(reader.error()))
        return unreadable(database(), reader.error());
    if (reader) {
        auto read = (*reader)->status();
        if (!read)
            return unreadable(database(), read.error());
        status.database = *std::move(read);
    }
    print(form_ == Form::Json ? statusJson(status) + "\n" : statusText(status));
    if (!status.isSound())
        return Error{"analytics", 0,
                     "the measurement database is damaged: the next run of skyflare-watch makes it anew"};
    if (const auto balance = status.balance(); !balance)
        return Error{"analytics", 0, "the ledger does not balance: " + balance.error().message};
    return {};
}

Result<> AnalyticsInspection::printEvents()
{
    APMConsoleMonitor monitor(services_.console, services_.clock, {});
    bool hasEvents = false;
    const auto reader = MeasurementReader::open(database(), monitor);
    if (!reader && !isMissing(reader.error()))
        return unreadable(database(), reader.error());
    if (reader) {
        const auto read = (*reader)->forEachWaitingEvent([this, &hasEvents](const RawEvent &event) {
            hasEvents = true;
            print(form_ == Form::Json ? eventJson(event) + "\n" : eventText(event));
        });
        if (!read)
            return unreadable(database(), read.error());
    }
    if (!hasEvents && form_ == Form::Text)
        print("No event is waiting: nothing has been recorded yet, or it was wiped.\n");
    return {};
}

void AnalyticsInspection::print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), services_.answers);
}

} // namespace skyflare
