#pragma once

#include "platform/image/PictureRows.h"
#include "platform/image/VideoFrame.h"
#include "platform/image/YcbcrConversion.h"

namespace skyflare {

/// The rows of an uncompressed frame as RGB, each converted when it is asked for. The frame must outlive it.
class FrameRows final : public PictureRows {
public:
    using Converter = const std::uint8_t *(*)(const VideoFrame &frame, const YcbcrConversion &conversion,
                                              int y, std::span<std::uint8_t> rgb);

    /// @return an error for a frame without an image buffer and for a compressed one.
    static Result<FrameRows> of(const VideoFrame &frame);

    [[nodiscard]] int width() const override { return frame_->width; }
    [[nodiscard]] int height() const override { return frame_->height; }
    [[nodiscard]] const std::uint8_t *row(int y, std::span<std::uint8_t> room) const noexcept override
    {
        return converter_(*frame_, conversion_, y, room);
    }

private:
    FrameRows(const VideoFrame &frame, Converter converter);

    const VideoFrame *frame_;
    Converter converter_;
    YcbcrConversion conversion_;
};

/// Any VideoFrame as RGB, at its own size: the formulas of averageRed() for all three channels.
/// @return an error for a frame without an image buffer and for damaged compressed ones. Any thread.
Result<PixelBuffer> convertToRgb(const VideoFrame &frame);

} // namespace skyflare
