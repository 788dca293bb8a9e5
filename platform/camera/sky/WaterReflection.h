#pragma once

#include "platform/camera/sky/I420View.h"
#include "platform/camera/sky/NightScene.h"
#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/SensorNoise.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// The water before the city: the picture above it, mirrored, broken up by waves. Near the viewer the waves
/// are steeper and show the sky from ever higher up.
///
/// Threads: any.
class WaterReflection {
public:
    WaterReflection(const SceneLayout &layout, std::uint64_t seed);

    /// Fills the water's rows from those above, which must be done.
    void draw(const I420View &picture, const NightScene &scene, const SensorNoise &noise, std::int64_t frame,
              double seconds) const;

private:
    struct Row;
    struct Plane;

    const SceneLayout layout_;
    std::vector<std::int8_t> waves_;

    [[nodiscard]] Row rowAt(int row, double seconds) const;
    void drawRow(const Plane &plane, const Row &row) const;
};

} // namespace skyflare
