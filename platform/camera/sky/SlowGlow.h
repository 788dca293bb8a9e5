#pragma once

#include "platform/camera/sky/HazeGrid.h"
#include "platform/camera/sky/SceneLayout.h"

#include <cstdint>

namespace skyflare {

/// What brightens the sky without being a burst: every eleven seconds or so the smoke over the city is lit
/// up, by floodlights or the moon, over some seconds and sinks back.
///
/// Threads: any.
class SlowGlow {
public:
    explicit SlowGlow(std::uint64_t seed) : seed_(seed) {}

    /// The light as it is `seconds` after the start; meanRed is 0 where there is none.
    [[nodiscard]] HazeLight lightAt(double seconds, const SceneLayout &layout) const;

private:
    std::uint64_t seed_;
};

} // namespace skyflare
