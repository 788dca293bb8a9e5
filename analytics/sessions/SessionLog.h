#pragma once

#include "analytics/model/LogText.h"

/// What the reporters of sessions and screens say.
namespace skyflare::sessionLog {

using Level = APMMonitor::Level;

// Sessions
inline constexpr LogText negativeEngagement{Level::Warning, 25000,
                                            "Incurred engagement time is negative. Setting to 0.0 instead"};
inline constexpr LogText sessionNotStarted{Level::Debug, 25001,
                                           "Session start event not logged. Application is not active"};
inline constexpr LogText engagementNotLogged{Level::Debug, 25002,
                                             "User engagement event not logged. Application is not active"};
inline constexpr LogText extendSessionReserved{
    Level::Warning, 25003,
    "extend_session is a reserved parameter. To extend or start a session in the background, set an event "
    "parameter {@'extend_session': @1}"};

// Screens
inline constexpr LogText trackingController{Level::Debug, 25010, "Tracking view controller. Class, ID"};
inline constexpr LogText controllerAlreadyTracked{Level::Debug, 25011,
                                                  "View controller already tracked. Class, ID"};
inline constexpr LogText trimmedClassName{
    Level::Debug, 25012, "Trimmed name of default screen class. Original screen class, trimmed screen class"};
inline constexpr LogText notOnMainThread{
    Level::Error, 25013,
    "setScreenName:screenClass: must be called from the main thread to ensure that events are associated "
    "with the intended screen."};
inline constexpr LogText noControllerYet{
    Level::Error, 25014, "setScreenName:screenClass: must be called after a view controller has appeared"};
inline constexpr LogText duplicateScreen{Level::Info, 25015,
                                         "Ignoring duplicate screen name and screen class"};
inline constexpr LogText screenReportingDisabled{
    Level::Warning, 25016, "Ignoring call to setScreenName:screenClass:. Screen reporting is disabled."};
inline constexpr LogText appNotActive{Level::Info, 25017, "Screen view event not logged. App is not active."};
inline constexpr LogText emptyScreen{Level::Warning, 25018,
                                     "Screen view event not logged. Screen parameters were empty"};

} // namespace skyflare::sessionLog
