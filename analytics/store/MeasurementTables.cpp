#include "analytics/store/MeasurementTables.h"

#include <array>

namespace skyflare {

namespace {

constexpr std::array appMetadata{ColumnInfo{"last_bundle_index", "INTEGER NOT NULL"},
                                 ColumnInfo{"last_bundle_end_timestamp", "REAL NOT NULL"}};

constexpr std::array appMetadataAddOn{ColumnInfo{"last_bundle_start_timestamp", "REAL"},
                                      ColumnInfo{"day", "INTEGER"},
                                      ColumnInfo{"daily_conversions_count", "INTEGER"},
                                      ColumnInfo{"daily_events_count", "INTEGER"},
                                      ColumnInfo{"daily_public_events_count", "INTEGER"},
                                      ColumnInfo{"daily_error_events_count", "INTEGER"},
                                      ColumnInfo{"remote_config_data", "BLOB"},
                                      ColumnInfo{"remote_config_timestamp", "REAL"},
                                      ColumnInfo{"daily_real_time_conversion_events_count", "INTEGER"},
                                      ColumnInfo{"last_delivery_index", "INTEGER"},
                                      ColumnInfo{"daily_real_time_dcu_events_count", "INTEGER"}};

constexpr std::array rawEventsMetadata{ColumnInfo{"metadata_fingerprint", "INTEGER NOT NULL PRIMARY KEY"},
                                       ColumnInfo{"metadata", "BLOB NOT NULL"}};

constexpr std::array rawEvents{
    ColumnInfo{"name", "TEXT NOT NULL"}, ColumnInfo{"timestamp", "INTEGER NOT NULL"},
    ColumnInfo{"metadata_fingerprint", "INTEGER NOT NULL"}, ColumnInfo{"data", "BLOB NOT NULL"}};

constexpr std::array rawEventsAddOn{ColumnInfo{"is_realtime", "INTEGER"}};

/// Times have fractions. A table that declares "timestamp" as something else than REAL is rebuilt.
constexpr std::array rawEventsModified{ColumnInfo{"timestamp", "REAL NOT NULL"}};

constexpr std::array events{ColumnInfo{"name", "TEXT NOT NULL PRIMARY KEY"},
                            ColumnInfo{"lifetime_count", "INTEGER NOT NULL"},
                            ColumnInfo{"current_bundle_count", "INTEGER NOT NULL"},
                            ColumnInfo{"last_fire_timestamp", "REAL NOT NULL"}};

constexpr std::array eventsAddOn{
    ColumnInfo{"last_bundled_timestamp", "REAL"}, ColumnInfo{"last_sampled_complex_event_id", "INTEGER"},
    ColumnInfo{"last_sampling_rate", "INTEGER"},  ColumnInfo{"last_exempt_from_sampling", "INTEGER"},
    ColumnInfo{"last_bundled_day", "INTEGER"},    ColumnInfo{"current_session_count", "INTEGER"}};

constexpr std::array userAttributes{ColumnInfo{"name", "TEXT NOT NULL PRIMARY KEY"},
                                    ColumnInfo{"set_timestamp", "REAL NOT NULL"},
                                    ColumnInfo{"value", "BLOB NOT NULL"}};

constexpr std::array userAttributesAddOn{ColumnInfo{"origin", "TEXT"}};

constexpr std::array queue{ColumnInfo{"data", "BLOB NOT NULL"},
                           ColumnInfo{"bundle_end_timestamp", "REAL NOT NULL"}};

constexpr std::array queueAddOn{ColumnInfo{"is_realtime", "INTEGER"}, ColumnInfo{"retry_count", "INTEGER"}};

constexpr std::array eventFilters{
    ColumnInfo{"audience_id", "INTEGER NOT NULL"}, ColumnInfo{"filter_id", "INTEGER NOT NULL"},
    ColumnInfo{"event_name", "TEXT NOT NULL"}, ColumnInfo{"data", "BLOB NOT NULL"}};

constexpr std::array eventFiltersAddOn{ColumnInfo{"session_scoped", "INTEGER"}};

constexpr std::array propertyFilters{
    ColumnInfo{"audience_id", "INTEGER NOT NULL"}, ColumnInfo{"filter_id", "INTEGER NOT NULL"},
    ColumnInfo{"property_name", "TEXT NOT NULL"}, ColumnInfo{"data", "BLOB NOT NULL"}};

constexpr std::array propertyFiltersAddOn{ColumnInfo{"session_scoped", "INTEGER"}};

constexpr std::array audienceFilterValues{ColumnInfo{"audience_id", "INTEGER NOT NULL PRIMARY KEY"},
                                          ColumnInfo{"current_results", "BLOB"},
                                          ColumnInfo{"previous_results", "BLOB"}};

constexpr std::array purchaseTransactions{ColumnInfo{"fingerprint", "TEXT NOT NULL PRIMARY KEY"}};

constexpr std::array subscriptions{ColumnInfo{"subscription_id", "TEXT NOT NULL PRIMARY KEY"}};

constexpr std::array conditionalProperties{ColumnInfo{"name", "TEXT NOT NULL PRIMARY KEY"},
                                           ColumnInfo{"origin", "TEXT NOT NULL"},
                                           ColumnInfo{"value", "BLOB NOT NULL"},
                                           ColumnInfo{"creation_timestamp", "REAL NOT NULL"},
                                           ColumnInfo{"active", "INTEGER NOT NULL"},
                                           ColumnInfo{"trigger_timeout", "REAL NOT NULL"},
                                           ColumnInfo{"triggered_timestamp", "REAL NOT NULL"},
                                           ColumnInfo{"time_to_live", "REAL NOT NULL"},
                                           ColumnInfo{"trigger_event_name", "TEXT"},
                                           ColumnInfo{"timed_out_event", "BLOB"},
                                           ColumnInfo{"triggered_event", "BLOB"},
                                           ColumnInfo{"expired_event", "BLOB"}};

constexpr std::array mainEventParams{ColumnInfo{"event_id", "INTEGER NOT NULL PRIMARY KEY"},
                                     ColumnInfo{"children_to_process", "INTEGER NOT NULL"},
                                     ColumnInfo{"main_event", "BLOB NOT NULL"}};

constexpr std::array eventLedger{ColumnInfo{"entry", "TEXT NOT NULL PRIMARY KEY"},
                                 ColumnInfo{"count", "INTEGER NOT NULL"}};

constexpr std::array databaseIdentity{ColumnInfo{"identity", "TEXT NOT NULL"}};

constexpr std::string_view filterKey = R"(PRIMARY KEY ("audience_id", "filter_id"))";

constexpr std::array tables{
    MeasurementTable{"app_metadata", {appMetadata, appMetadataAddOn, {}, {}}},
    MeasurementTable{"raw_events_metadata", {rawEventsMetadata, {}, {}, {}}},
    MeasurementTable{"raw_events", {rawEvents, rawEventsAddOn, rawEventsModified, {}}},
    MeasurementTable{"events", {events, eventsAddOn, {}, {}}},
    MeasurementTable{"user_attributes", {userAttributes, userAttributesAddOn, {}, {}}},
    MeasurementTable{"queue", {queue, queueAddOn, {}, {}}},
    MeasurementTable{"event_filters", {eventFilters, eventFiltersAddOn, {}, filterKey}},
    MeasurementTable{"property_filters", {propertyFilters, propertyFiltersAddOn, {}, filterKey}},
    MeasurementTable{"audience_filter_values", {audienceFilterValues, {}, {}, {}}},
    MeasurementTable{"purchase_transactions", {purchaseTransactions, {}, {}, {}}},
    MeasurementTable{"subscriptions", {subscriptions, {}, {}, {}}},
    MeasurementTable{"conditional_properties", {conditionalProperties, {}, {}, {}}},
    MeasurementTable{"main_event_params", {mainEventParams, {}, {}, {}}},
    MeasurementTable{"event_ledger", {eventLedger, {}, {}, {}}},
    MeasurementTable{"database_identity", {databaseIdentity, {}, {}, {}}}};

// Those of "is_realtime" hold the few rows alone that have it set.
constexpr std::array indexes{
    MeasurementIndex{"raw_events_metadata_fingerprint",
                     "CREATE INDEX IF NOT EXISTS raw_events_metadata_fingerprint ON raw_events "
                     "(metadata_fingerprint)"},
    MeasurementIndex{"raw_events_is_realtime", "CREATE INDEX IF NOT EXISTS raw_events_is_realtime ON "
                                               "raw_events (is_realtime) WHERE is_realtime = 1"},
    MeasurementIndex{"queue_bundle_end_timestamp", "CREATE INDEX IF NOT EXISTS queue_bundle_end_timestamp "
                                                   "ON queue (bundle_end_timestamp)"},
    MeasurementIndex{"queue_is_realtime", "CREATE INDEX IF NOT EXISTS queue_is_realtime ON queue "
                                          "(is_realtime) WHERE is_realtime = 1"}};

} // namespace

std::span<const MeasurementIndex> measurementIndexes()
{
    return indexes;
}

std::span<const MeasurementTable> measurementTables()
{
    return tables;
}

} // namespace skyflare
