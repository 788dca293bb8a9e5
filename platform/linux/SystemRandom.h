#pragma once

#include "platform/base/RandomSource.h"

namespace skyflare {

/// The kernel's random numbers. Any thread.
class SystemRandom final : public RandomSource {
public:
    Result<> fill(std::span<std::uint8_t> bytes) override;
};

} // namespace skyflare
