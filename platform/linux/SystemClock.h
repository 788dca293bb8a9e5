#pragma once

#include "platform/base/Clock.h"

namespace skyflare {

/// The machine's clocks. Any thread.
class SystemClock final : public Clock {
public:
    [[nodiscard]] double secondsSince1970() const override;
    [[nodiscard]] double secondsOfUptime() const override;
};

} // namespace skyflare
