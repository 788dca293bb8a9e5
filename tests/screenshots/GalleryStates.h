#pragma once

#include "tests/screenshots/ScreenStates.h"

namespace skyflare {

/// Those of the gallery and of one photo.
std::vector<ScreenState> galleryStates();

} // namespace skyflare
