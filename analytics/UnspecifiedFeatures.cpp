#include "analytics/UnspecifiedFeatures.h"

#include "analytics/validation/RefusalLog.h"
#include "analytics/worker/MeasurementLog.h"

#include <algorithm>

namespace skyflare {

void UnspecifiedFeatures::setConsent(const ConsentSettings &consent) const
{
    const auto isUsable = [this](const ConsentSettings::value_type &setting) {
        const auto &[type, value] = setting;
        if (!type.empty() && (value == "granted" || value == "denied"))
            return true;
        writeLog(monitor_, measurementLog::invalidConsent, described(type) + ", " + described(value));
        return false;
    };
    if (std::ranges::count_if(consent, isUsable) == 0)
        writeLog(monitor_, measurementLog::emptyConsent);
}

} // namespace skyflare
