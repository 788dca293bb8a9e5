#pragma once

#include "platform/image/Image.h"

#include <array>
#include <functional>

namespace skyflare {

/// The three samples of a pixel: Y, Cb, Cr or R, G, B.
using Samples = std::array<std::uint8_t, 3>;
using Sampler = std::function<Samples(int x, int y)>;

/// A frame whose rows are `padding` bytes longer than they need be; what is no sample is 0xEE.
VideoFrame makeFrame(PixelFormat format, int width, int height, int padding, const Sampler &samples);

PixelBuffer makePicture(int width, int height, const Sampler &samples);

/// The same numbers every time for the same arguments, scattered over 0 to 255.
std::uint8_t scattered(int x, int y, int channel);
Samples noise(int x, int y);

enum class JpegKind { YcbcrHalved, YcbcrFull, Progressive, Gray, Cmyk };

/// Quality 100, so that a plain area keeps its colour to one step.
Bytes encodeJpeg(const PixelBuffer &pixels, JpegKind kind);

} // namespace skyflare
