#pragma once

#include "analytics/model/APMValue.h"
#include "platform/base/Clock.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace skyflare {

/// When something was reported, by both clocks.
///
/// Threads: any; a value.
struct SessionMoment {
    double secondsSince1970 = 0;
    double secondsOfUptime = 0;

    static SessionMoment now(const Clock &clock)
    {
        return {clock.secondsSince1970(), clock.secondsOfUptime()};
    }
};

/// The engine, as the reporters of sessions and screens log through it.
///
/// Threads: the engine's worker.
class SessionEvents {
public:
    /// An event that the engine logs by itself.
    struct Event {
        enum class Origin { Auto, App };

        Origin origin = Origin::Auto;
        std::string_view name;
        std::vector<std::pair<std::string_view, std::int64_t>> numbers = {}; ///< its parameters
        APMParameters screen = {};                                           ///< empty: the one that is shown
    };

    SessionEvents() = default;
    SessionEvents(const SessionEvents &) = delete;
    SessionEvents &operator=(const SessionEvents &) = delete;
    virtual ~SessionEvents() = default;

    virtual void logEvent(Event event, const SessionMoment &at) = 0;
    /// A property of the user, of origin "auto".
    virtual void setUserProperty(std::string_view name, std::int64_t value) = 0;
};

} // namespace skyflare
