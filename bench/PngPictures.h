#pragma once

#include "platform/image/PixelBuffer.h"
#include "platform/image/VideoFrame.h"

#include <string>
#include <vector>

namespace skyflare::bench {

struct NamedPicture {
    std::string name;
    PixelBuffer pixels;
};

/// A night with bursts and sensor noise as the simulated camera sees it, 4000 × 3000; always the same.
VideoFrame nightFrame();
/// The same with more noise, independent in each channel, as a small sensor has it at its highest gain.
PixelBuffer withNoise(PixelBuffer picture, float deviation);

/// Pictures without noise, 4000 × 3000.
std::vector<NamedPicture> cleanPictures();

} // namespace skyflare::bench
