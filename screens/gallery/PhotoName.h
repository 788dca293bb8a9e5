#pragma once

#include "store/PhotoModel.h"

namespace skyflare {

/// What a photo is called for those who cannot see it: that it is one, and when it was taken, as the user's
/// language writes it. Any thread.
std::string photoName(const PhotoModel &photo);

} // namespace skyflare
