#pragma once

#include "app/AppOptions.h"
#include "app/BackgroundPush.h"

namespace skyflare {

/// Runs the app without a window until it is no longer needed: `skyflare --background`.
/// @return whether the app itself is to start now, in this process
BackgroundPush::End runInBackground(const AppOptions &options);

} // namespace skyflare
