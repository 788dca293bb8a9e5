#pragma once

#include "analytics/model/APMMonitor.h"
#include "platform/base/Bytes.h"

#include <functional>
#include <map>
#include <string>

namespace skyflare {

/// Consent by its type: "granted" or "denied".
using ConsentSettings = std::map<std::string, std::string>;
using OpenURLListener = std::function<void(const std::string &url)>;

/// All that the engine can be asked and does not do, so that one place shows it: campaigns and deep links,
/// purchases, conversions measured on the device, consent. Nothing that is handed over here is kept, sent or
/// logged. Programs may call all of it, for a version of the engine that does it.
///
/// Threads: any. Borrows the monitor.
class UnspecifiedFeatures {
public:
    explicit UnspecifiedFeatures(APMMonitor &monitor) : monitor_(monitor) {}

    /// Checks the values, and says which of them it ignores. That is all: no consent is kept, and none is
    /// waited for, since nothing is sent that would need it.
    void setConsent(const ConsentSettings &consent) const;

    static void handleOpenURL(const std::string & /*url*/) {}
    static void handleUserActivity(const std::string & /*webpageURL*/) {}
    static void setOpenURLListener(const OpenURLListener & /*listener*/) {}

    // handleEventsForBackgroundURLSession:completionHandler:
    /// The system counts on the completion handler: it is called, before this returns.
    static void handleEventsForBackgroundURLSession(const std::string & /*identifier*/,
                                                    const std::function<void()> &completionHandler)
    {
        if (completionHandler)
            completionHandler();
    }

    static void logTransactionWithProductID(const std::string & /*productID*/) {}

    static void initiateOnDeviceConversionMeasurementWithEmailAddress(const std::string & /*emailAddress*/) {}
    static void initiateOnDeviceConversionMeasurementWithPhoneNumber(const std::string & /*phoneNumber*/) {}
    static void initiateOnDeviceConversionMeasurementWithHashedEmailAddress(const Bytes & /*hash*/) {}
    static void initiateOnDeviceConversionMeasurementWithHashedPhoneNumber(const Bytes & /*hash*/) {}

private:
    APMMonitor &monitor_;
};

} // namespace skyflare
