#pragma once

#include <cstddef>
#include <cstdint>

namespace skyflare {

/// Somewhere to draw one I420 picture (ITU-R BT.709, limited range): Y, Cb and Cr planes, the last two half
/// the size each way, rounded up. Owns nothing.
struct I420View {
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    std::uint8_t *luma = nullptr;
    std::uint8_t *cb = nullptr;
    std::uint8_t *cr = nullptr;
    std::ptrdiff_t lumaStride = 0;   ///< bytes
    std::ptrdiff_t chromaStride = 0; ///< bytes, of Cb and of Cr

    [[nodiscard]] int chromaWidth() const { return (width + 1) / 2; }
    [[nodiscard]] int chromaHeight() const { return (height + 1) / 2; }
};

} // namespace skyflare
