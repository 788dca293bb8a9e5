#pragma once

#include "platform/camera/sky/HazeGrid.h"
#include "platform/camera/sky/I420View.h"
#include "platform/camera/sky/LightBuffer.h"
#include "platform/camera/sky/NightScene.h"
#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/SensorNoise.h"
#include "platform/camera/sky/Shell.h"
#include "platform/camera/sky/ShellSchedule.h"
#include "platform/camera/sky/SkyParameters.h"
#include "platform/camera/sky/SlowGlow.h"
#include "platform/camera/sky/WaterReflection.h"
#include "platform/image/VideoFrame.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// A night with fireworks over a city, frame by frame.
///
/// A frame follows from the parameters and its number alone: the same bytes in every run, whatever was drawn
/// before. Each burst raises the mean red of its first frame by 0.09 to 0.25 at any size and rate; nothing
/// else raises it by more than 0.03 from one frame to the next at ten frames a second or more.
///
/// Threads: any, one at a time.
class SimulatedSky {
public:
    /// `parameters` must be within the limits that SkyParameters names.
    explicit SimulatedSky(const SkyParameters &parameters);

    [[nodiscard]] const SkyParameters &parameters() const { return parameters_; }

    /// Draws frame `number` (0 is the first), every pixel of it.
    void render(std::int64_t number, const I420View &into);
    /// The same in memory of its own.
    [[nodiscard]] VideoFrame frame(std::int64_t number);

    /// For each burst of the first `seconds`, the first frame that shows its light.
    [[nodiscard]] std::vector<std::int64_t> burstFrames(double seconds) const;
    /// The times of those frames, in seconds after the first frame.
    [[nodiscard]] std::vector<double> burstTimes(double seconds) const;

private:
    const SkyParameters parameters_;
    const SceneLayout layout_;
    const ShellSchedule schedule_;
    const NightScene scene_;
    const SensorNoise noise_;
    const SlowGlow slowGlow_;
    const WaterReflection water_;
    HazeGrid haze_;
    LightBuffer light_;
    std::vector<Shell> shells_; ///< those that the last frame showed; making one takes a while

    void drawShells(std::int64_t number, double seconds);
    void drawAir(std::int64_t number, const I420View &into);
};

} // namespace skyflare
