#pragma once

#include "tests/screenshots/ScreenStates.h"

namespace skyflare {

/// Those of the settings, with what a service says at their foot and without.
std::vector<ScreenState> settingsStates();

} // namespace skyflare
