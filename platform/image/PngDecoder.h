#pragma once

#include "platform/image/RowDecoder.h"

#include <memory>

namespace skyflare {

/// Decodes PNG (ISO/IEC 15948) to 8-bit RGB, whatever its depth and colours; alpha is left out.
class PngDecoder final : public RowDecoder {
public:
    /// Reads the header. @param encoded one picture, which must outlive the decoder.
    static Result<std::unique_ptr<PngDecoder>> open(std::span<const std::uint8_t> encoded);
    ~PngDecoder() override;

    [[nodiscard]] int width() const override;
    [[nodiscard]] int height() const override;
    Result<> readRow(std::span<std::uint8_t> rgb) override;

private:
    struct State;
    explicit PngDecoder(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace skyflare
