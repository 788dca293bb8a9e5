#pragma once

#include "analytics/model/APMMonitor.h"
#include "platform/base/Deployment.h"

#include <optional>
#include <string>

namespace skyflare {

/// How a deployer has set up the engine. What no file says is as it stands here; whatever would read or send
/// more than the events themselves is off unless it is asked for.
///
/// Threads: any; a value.
struct APMAnalyticsOptions {
    std::string appID;
    /// Where events go and settings come from: "https://collect.example.org", or without "https://";
    /// "http://" to this machine alone. Empty: nothing is sent, nothing is fetched.
    std::string collectionHost;
    std::string configurationHost;

    bool collectionEnabled = true; ///< until the user or the app chooses
    bool collectionDeactivated = false;
    bool automaticScreenReportingEnabled = true;

    /// Consent before anybody has been asked; nothing: neither given nor denied.
    std::optional<bool> allowAdStorage;
    std::optional<bool> allowAnalyticsStorage;
    std::optional<bool> allowAdUserData;
    std::optional<bool> allowAdPersonalizationSignals;

    bool idfvCollectionEnabled = false;
    bool registrationWithAdNetworkEnabled = false;
    bool deferredDeepLinkEnabled = false;
    bool sgtmUploadEnabled = false;
    bool tcfDataEnabled = false;

    bool operator==(const APMAnalyticsOptions &) const = default;

    /// What "FIREBASE_ANALYTICS_CONFIGURATION" in Info.plist says goes before all else. A value of the wrong
    /// type is reported and passed over; of an empty app id verbose logging tells.
    static APMAnalyticsOptions of(const Deployment &deployment, APMMonitor &monitor);
};

/// Whether events are recorded: never where collection is deactivated, else as was chosen last, else as the
/// options say.
/// @param choice  what setAnalyticsCollectionEnabled: has persisted, if it was ever called
[[nodiscard]] bool isCollectionEnabled(const APMAnalyticsOptions &options, std::optional<bool> choice);

} // namespace skyflare
