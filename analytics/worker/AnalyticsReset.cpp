#include "analytics/worker/AnalyticsReset.h"

#include "analytics/worker/MeasurementLog.h"

#include <algorithm>

namespace skyflare {

std::int64_t AnalyticsReset::tries() const
{
    return std::max<std::int64_t>(services_.suite.value(suiteKeys::resetRetryCount).value_or(0), 0);
}

void AnalyticsReset::makePending()
{
    services_.suite.setValue(tries() + 1, suiteKeys::resetRetryCount);
}

void AnalyticsReset::wipe()
{
    makePending(); // before it is tried: the process may end in between
    if (const auto wiped = services_.journal.reset(); !wiped) {
        writeLog(services_.monitor, measurementLog::resetFailed);
        return;
    }
    services_.suite.removeValue(suiteKeys::resetRetryCount);
    writeLog(services_.monitor, measurementLog::wasReset);
}

bool AnalyticsReset::wipeIfPending()
{
    if (tries() == 0)
        return false;
    wipe();
    return true;
}

} // namespace skyflare
