#pragma once

#include "platform/image/RowDecoder.h"

#include <memory>

namespace skyflare {

/// Decodes JPEG (ISO/IEC 10918-1) to RGB, whatever its colours: YCbCr, grey, RGB, CMYK, YCCK.
class JpegDecoder final : public RowDecoder {
public:
    /// How a chroma sample stands for several pixels.
    enum class Chroma {
        Smooth,     ///< interpolated, for a picture that is looked at
        Replicated, ///< the same for all its pixels, as in raw frames; quicker
    };
    struct Options {
        int eighths = 8; ///< the size to decode at: 1, 2, 4 or 8 eighths each way, rounded up
        Chroma chroma = Chroma::Smooth;
    };

    /// Reads the header. @param encoded one picture, which must outlive the decoder.
    static Result<std::unique_ptr<JpegDecoder>> open(std::span<const std::uint8_t> encoded, Options options);
    ~JpegDecoder() override;

    [[nodiscard]] int width() const override;
    [[nodiscard]] int height() const override;
    Result<> readRow(std::span<std::uint8_t> rgb) override;

    struct State; ///< the library's and ours

private:
    explicit JpegDecoder(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace skyflare
