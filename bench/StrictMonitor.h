#pragma once

#include "analytics/model/APMMonitor.h"
#include "analytics/store/APMPersistedConfig.h"
#include "analytics/store/StoreLog.h"

#include <cstdio>
#include <cstdlib>

namespace skyflare::bench {

/// Ends the program with what a store says: nothing that is measured may fail. But its events are of a fixed
/// day, and so may be outside of the time span that bundles have. Any thread.
class StrictMonitor final : public APMMonitor {
public:
    [[nodiscard]] bool isLogging(Level level) const override { return level != Level::Debug; }
    void log(Level /*level*/, int code, std::string_view message) override
    {
        if (code == storeLog::bundleOutsideTimeSpan.code)
            return;
        std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
        std::exit(EXIT_FAILURE);
    }
};

/// Never remembers when the store was cleaned last.
class NoConfig final : public APMPersistedConfig {
public:
    [[nodiscard]] double lastStaleDataDeletion() const override { return 0; }
    void setLastStaleDataDeletion(double /*secondsSince1970*/) override {}
};

} // namespace skyflare::bench
