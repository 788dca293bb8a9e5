#pragma once

#include "analytics/model/APMEvent.h"
#include "platform/base/PropertyList.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// Sees every event that goes its way before any listener, on the engine's worker.
using LogEventInterceptor = std::function<void(const APMEvent &)>;
/// Hears of every event, on the engine's worker, before it is stored.
using LogEventListener = std::function<void(const APMEvent &)>;
/// Names a listener, for its removal; 0 names none.
using LogEventListenerToken = std::uint64_t;

// Who logs an event or sets a property.
inline constexpr std::string_view appOrigin = "app";   ///< the app's own code
inline constexpr std::string_view autoOrigin = "auto"; ///< the engine, by itself
inline constexpr std::string_view startOrigin = "fa";  ///< the engine's own start

/// By which the app says that a screen is shown.
inline constexpr std::string_view screenViewName = "screen_view";

/// Whether events are recorded, at the moment of a call.
enum class Collection { Off, On };

/// One call to log an event, with all that goes along with it on its way to the worker.
///
/// Threads: any; a value.
struct LogEventCall {
    std::string origin;
    IsPublicEvent isPublicEvent = IsPublicEvent::Yes;
    std::optional<std::string> name; ///< nothing: the caller gave none, which is refused
    PropertyList::Dictionary parameters;
    std::optional<double> timestamp;       ///< seconds since 1970; nothing: when its turn comes
    std::optional<double> secondsOfUptime; ///< the same moment; nothing: not known
    Collection enabled = Collection::On;
    bool ignoreEnabled = false; ///< recorded even if it was off
    bool ignoreInterceptor = false;
    std::shared_ptr<const LogEventInterceptor> interceptor;
    APMParameters addedScreenParameters;
};

} // namespace skyflare
