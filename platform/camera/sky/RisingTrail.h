#pragma once

#include "platform/camera/sky/SceneLayout.h"
#include "platform/camera/sky/ShellSchedule.h"

namespace skyflare {

class HazeGrid;
class LightBuffer;

/// The thread of sparks that a shell draws on its way up, and what is left of it after the break.
void drawRisingTrail(const ShellPlan &plan, const SceneLayout &layout, float sinceBreak, LightBuffer &light,
                     HazeGrid &haze);

} // namespace skyflare
