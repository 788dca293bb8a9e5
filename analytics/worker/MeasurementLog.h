#pragma once

#include "analytics/model/LogText.h"

#include <string>
#include <string_view>

/// What the facade and its pipeline say.
namespace skyflare::measurementLog {

using Level = APMMonitor::Level;

// Start and end
inline constexpr LogText started{Level::Info, 21000, "Analytics started. Origin"};
inline constexpr LogText deactivated{Level::Info, 21001, "Analytics is deactivated. No event is recorded"};
inline constexpr LogText collectionChanged{Level::Info, 21002, "Analytics collection enabled"};
inline constexpr LogText leftBehind{Level::Warning, 21003, "Events left behind at the end. Count"};

// Events
inline constexpr LogText eventWhileDisabled{Level::Debug, 21004,
                                            "Event not logged. Analytics is disabled. Name"};
inline constexpr LogText tooManyEvents{Level::Error, 21005, "Data loss. Too many events logged. Name, limit"};
inline constexpr LogText tooManyErrorEvents{Level::Error, 21006,
                                            "Too many error events logged. Error code, limit"};
inline constexpr LogText tooManyPublicEvents{Level::Error, 21007,
                                             "Data loss. Too many public events logged. Name, limit"};
inline constexpr LogText tooManyEventNames{Level::Error, 21008,
                                           "Data loss. Too many different event names. Name, limit"};

// User properties
inline constexpr LogText propertyNotString{Level::Warning, 21010, "User property must be NSString. Value"};
inline constexpr LogText userIDNotString{Level::Warning, 21011, "User ID must be NSString. User ID"};
inline constexpr LogText propertyNotScalar{Level::Warning, 21012,
                                           "User property must be NSString or NSNumber. Value"};
inline constexpr LogText propertyWhileDisabled{Level::Info, 21013,
                                               "Analytics is disabled. User data not set."};
inline constexpr LogText adsWhileDisabled{Level::Info, 21014,
                                          "Personalized Ads property changed while Analytics is disabled"};
inline constexpr LogText propertyOriginInvalid{
    Level::Error, 21015, "Unable to set user property. Origin is invalid. Origin, name"};
inline constexpr LogText tooManyProperties{Level::Error, 21016, "Too many user properties. Name, limit"};
inline constexpr LogText queryWhileDisabled{
    Level::Warning, 21017, "Cannot query for public user properties when Analytics is disabled"};

// Sessions
inline constexpr LogText nilSessionIDCompletion{Level::Error, 21020,
                                                "Analytics sessionID completion cannot be nil"};
inline constexpr LogText negativeTimeout{
    Level::Warning, 21021, "Received negative timeout session duration. Setting to 0.0 instead."};

// Listeners
inline constexpr LogText nilListener{Level::Error, 21030, "Attempted addition of nil log event listener."};
inline constexpr LogText invalidListenerToken{Level::Error, 21031,
                                              "Attempted removal of log event listener with invalid token."};

// Reset
inline constexpr LogText noInstanceID{Level::Error, 21040, "Cannot generate a new app instance ID"};
inline constexpr LogText resetFailed{Level::Error, 21041, "Failed to reset Analytics data"};
inline constexpr LogText wasReset{Level::Info, 21042, "Analytics data was reset"};

// Consent
inline constexpr LogText invalidConsent{
    Level::Warning, 21050,
    "Valid consent values are 'granted' and 'denied'. Ignoring invalid consent setting"};
inline constexpr LogText emptyConsent{Level::Warning, 21051, "Discarding empty consent settings"};

// Database
inline constexpr LogText noDatabase{Level::Error, 21060,
                                    "Cannot open the measurement database. Nothing is recorded. Error"};
inline constexpr LogText databaseVanished{Level::Warning, 21061,
                                          "The measurement database has vanished. Creating it anew."};
inline constexpr LogText databaseDamaged{Level::Error, 21062,
                                         "The measurement database is damaged. Opening it again. Error"};
inline constexpr LogText eventsNotStored{Level::Error, 21063, "Events could not be stored. Count, error"};
inline constexpr LogText rowsLost{Level::Warning, 21064, "Stored events are no longer there. Count"};
inline constexpr LogText ledgerUnsound{Level::Warning, 21065,
                                       "The kept ledger does not add up. It begins anew."};

inline constexpr LogText noDatabaseID{Level::Error, 21066,
                                      "Cannot generate a database ID. Nothing is bundled. Error"};

/// What texts that end with ", limit" go on with.
inline std::string withLimit(std::string_view what, std::int64_t limit)
{
    return std::string(what) + ", " + std::to_string(limit);
}

} // namespace skyflare::measurementLog
