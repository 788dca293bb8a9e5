#pragma once

#include "analytics/validation/APMDataTypeValidator.h"
#include "analytics/worker/EventRecorder.h"
#include "analytics/worker/LogEventCall.h"

#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// One call to set or remove a property of the user.
///
/// Threads: any; a value.
struct UserPropertyCall {
    enum class Kind {
        Public,  ///< by the app: a text alone, and by the stricter rules
        UserID,  ///< by the app: a text alone
        Internal ///< by the engine or another component
    };

    Kind kind = Kind::Public;
    std::string origin;
    std::optional<std::string> name;   ///< nothing: the caller gave none, which is refused
    std::optional<PropertyList> value; ///< nothing: the property goes
    Collection enabled = Collection::On;
};

/// The properties of the user: judges what is to be set, keeps to their number, and sets them. What is
/// refused is counted, and makes an error event.
///
/// "allow_personalized_ads" is mirrored into the engine's own "_npa": 1 for "false" in any case of letters, 0
/// for any other text, and gone with it. Whatever the app may not set for there being too many properties,
/// its user's word about ads holds.
///
/// Threads: the engine's worker. Borrows its Services.
class UserProperties {
public:
    struct Services {
        EventJournal &journal;
        EventRecorder &recorder;
        APMMonitor &monitor;
        const Clock &clock;
        EventLedger &ledger;
    };

    UserProperties(const Services &services, const MeasurementLimits &limits)
        : services_(services),
          validator_(services.monitor, limits.validation),
          mostPublic_(limits.publicUserProperties)
    {
    }

    /// They hold from the next one on; none that is there already goes.
    void setLimits(const MeasurementLimits &limits)
    {
        validator_ = APMDataTypeValidator(services_.monitor, limits.validation);
        mostPublic_ = limits.publicUserProperties;
    }

    // setUserAttributeOnWorkerQueue:
    void setUserAttribute(UserPropertyCall call);

    // userPropertiesIncludingInternal:
    /// By name. The error: there is no database.
    Result<std::vector<APMUserAttribute>> userProperties(IncludingInternal includingInternal);
    /// The property "_sid".
    Result<std::int64_t> sessionID();

private:
    Services services_;
    APMDataTypeValidator validator_;
    std::int64_t mostPublic_;

    /// The value is empty where the property is to go.
    [[nodiscard]] std::optional<Refusal> judge(UserPropertyCall &call, std::optional<APMValue> &value);
    [[nodiscard]] std::optional<Refusal> judgeName(const UserPropertyCall &call);
    [[nodiscard]] Refusal wrongType(const UserPropertyCall &call);
    [[nodiscard]] std::optional<Refusal> judgeCount(const UserPropertyCall &call);
    void set(const APMUserAttribute &attribute);
    void mirrorAds(const std::optional<APMValue> &value);
    void refuse(const Refusal &refusal);
};

} // namespace skyflare
