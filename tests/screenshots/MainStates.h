#pragma once

#include "tests/screenshots/Camera.h"
#include "tests/screenshots/ScreenStates.h"

namespace skyflare {

/// Those of the main screen, and of what it presents, with the night of that camera.
std::vector<ScreenState> mainStates(const PictureCamera &camera);

/// One frame, to the main screen if it is the one that is shown.
void showOnMainScreen(const VideoFrame &frame);

} // namespace skyflare
