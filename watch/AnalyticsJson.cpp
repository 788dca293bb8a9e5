#include "watch/AnalyticsJson.h"

#include <nlohmann/json.hpp>

namespace skyflare {

namespace {

using Object = nlohmann::ordered_json;

std::string line(const Object &object)
{
    return object.dump(-1, ' ', false, Object::error_handler_t::replace);
}

Object valueOf(const APMValue &value);

Object parametersOf(const APMParameters &parameters)
{
    Object object = Object::object();
    for (const APMParameter &parameter : parameters)
        object[parameter.name] = valueOf(parameter.value);
    return object;
}

struct ValueJson {
    Object operator()(const std::string &text) const { return text; }
    Object operator()(std::int64_t number) const { return number; }
    Object operator()(double number) const { return number; } // null where it is no number
    Object operator()(const APMValue::Array &items) const
    {
        Object array = Object::array();
        for (const APMParameters &item : items)
            array.push_back(parametersOf(item));
        return array;
    }
};

Object valueOf(const APMValue &value)
{
    return std::visit(ValueJson{}, value.held());
}

template <typename T> Object orNull(const std::optional<T> &value)
{
    return value ? Object(*value) : Object(nullptr);
}

Object ledgerOf(const AnalyticsStatus &status, const EventTally &ledger)
{
    Object object = Object::object();
    for (std::size_t number = 0; number < EventTally::size; ++number)
        if (number < ledgerEntryCount || ledger[number] > 0) // of the many codes those that there are
            object[EventTally::key(number)] = ledger[number];
    object["under_way"] = ledger.underWay();
    const auto balance = status.balance();
    object["balances"] = balance.has_value();
    if (!balance)
        object["imbalance"] = balance.error().message;
    return object;
}

Object databaseOf(const AnalyticsStatus &status, const MeasurementStatus &database)
{
    const APMDailyCounts today = status.countsOfToday();
    Object properties = Object::array();
    for (const APMUserAttribute &attribute : database.userAttributes)
        properties.push_back({{"name", attribute.name},
                              {"value", valueOf(attribute.value)},
                              {"origin", attribute.origin},
                              {"set_s", attribute.setTimestamp}});
    return {{"bytes", database.fileBytes},
            {"sound", status.isSound()},
            {"integrity", database.integrity},
            {"waiting_events", database.waitingEvents},
            {"oldest_s", orNull(database.oldestEvent)},
            {"newest_s", orNull(database.newestEvent)},
            {"waiting_bundles", database.waitingBundles},
            {"bundled_events", database.bundledEvents},
            {"today",
             {{"events", today.eventsCount},
              {"public_events", today.publicEventsCount},
              {"error_events", today.errorEventsCount},
              {"realtime_events", today.realtimeDCUEventsCount}}},
            {"user_properties", std::move(properties)},
            {"ledger", ledgerOf(status, database.ledger)}};
}

Object sendingOf(const AnalyticsStatus &status)
{
    const auto destination = status.destination();
    return {{"to", destination ? Object(*destination) : Object(nullptr)},
            {"why_not", destination ? Object(nullptr) : Object(destination.error().message)}};
}

} // namespace

std::string eventJson(const RawEvent &event)
{
    return line({{"type", "event"},
                 {"time_s", event.event.timestamp},
                 {"name", event.event.name},
                 {"origin", event.event.origin},
                 {"realtime", event.isRealtime == IsRealtime::Yes},
                 {"parameters", parametersOf(event.event.parameters)}});
}

std::string statusJson(const AnalyticsStatus &status)
{
    return line({{"type", "analytics_status"},
                 {"path", status.databasePath.string()},
                 {"database", status.database ? databaseOf(status, *status.database) : Object(nullptr)},
                 {"collection", {{"on", status.isCollectionOn()}, {"why", status.whyCollection()}}},
                 {"sending", sendingOf(status)},
                 {"app_instance_id", orNull(status.appInstanceID)},
                 {"debug_mode", status.modes.debugMode},
                 {"verbose_logging", status.modes.verboseLogging}});
}

} // namespace skyflare
