#pragma once

#include "platform/base/Result.h"

#include <cstdint>
#include <span>

namespace skyflare {

/// Numbers that nobody can guess, for identifiers. Any thread.
class RandomSource {
public:
    RandomSource() = default;
    RandomSource(const RandomSource &) = delete;
    RandomSource &operator=(const RandomSource &) = delete;
    virtual ~RandomSource() = default;

    virtual Result<> fill(std::span<std::uint8_t> bytes) = 0;
};

} // namespace skyflare
