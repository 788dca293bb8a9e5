#pragma once

#include "platform/image/PixelBuffer.h"

#include <QImage>

namespace skyflare {

/// The picture as the screen has it, so that nothing is left to be converted on main. Any thread.
QImage toImage(const PixelBuffer &pixels);

} // namespace skyflare
