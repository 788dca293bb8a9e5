#pragma once

#include "platform/image/PictureRows.h"
#include "platform/image/PngStripEncoder.h"
#include "platform/image/VideoFrame.h"

#include <atomic>
#include <vector>

namespace skyflare {

/// Encodes losslessly as PNG (ISO/IEC 15948), 8-bit RGB. Quick rather than small.
///
/// The same pixels give the same bytes, whatever the number of threads and the load.
/// Keeps its buffers for the next picture: memory that is new costs as much as the encoding.
/// Threads: one at a time. encode() starts others for as long as it runs; where none can be had the caller's
///     does it alone.
class PngEncoder {
public:
    explicit PngEncoder(int threads = 2) : threads_(threads) {}

    /// @param png  what is in it is replaced; its memory is used again.
    /// @return an error for a picture without pixels or of absurd width, and when there is no memory.
    Result<> encode(const PictureRows &rows, Bytes &png);

private:
    /// Memory whose pages cost nothing until they are written to.
    struct Room {
        std::unique_ptr<std::uint8_t[]> bytes;
        std::size_t size = 0;
    };

    int threads_;
    std::vector<PngStripEncoder> encoders_; ///< one a thread
    std::vector<PngStripEncoder::Strip> strips_;
    Room chunks_; ///< of each strip, in places of the same size
    int rowsAStrip_ = 0;
    std::size_t chunkRoom_ = 0;
    std::atomic<std::size_t> nextStrip_ = 0;

    void prepare(const PictureRows &rows);
    void encodeStrips(const PictureRows &rows);
    void shareStrips(const PictureRows &rows, PngStripEncoder &encoder) noexcept;
    void join(const PictureRows &rows, Bytes &png) const;
};

/// The same with an encoder that is kept for the next call. Any thread, several at once.
Result<Bytes> encodePng(const PixelBuffer &pixels);
/// A frame at its own size, as convertToRgb() has it, without all its RGB in memory at once.
/// @return an error also for a frame without an image buffer and for damaged compressed ones.
Result<Bytes> encodePng(const VideoFrame &frame);

} // namespace skyflare
