#pragma once

#include "platform/base/Bytes.h"
#include "platform/image/PixelBuffer.h"
#include "platform/image/VideoFrame.h"

#include <memory>
#include <optional>

namespace skyflare {

/// A small copy of a picture, as JPEG, that is kept somewhere: whoever shows the picture small needs not look
/// at all of it.
///
/// Threads: any.
class ReducedPicture {
public:
    ReducedPicture() = default;
    ReducedPicture(const ReducedPicture &) = delete;
    ReducedPicture &operator=(const ReducedPicture &) = delete;
    virtual ~ReducedPicture() = default;

    /// Null where there is none.
    [[nodiscard]] virtual std::shared_ptr<const Bytes> read() const = 0;
    /// Keeps this one from now on, if it can.
    virtual void write(std::shared_ptr<const Bytes> jpeg) const = 0;
};

/// One that lives as long as its picture.
class ReducedInMemory final : public ReducedPicture {
public:
    explicit ReducedInMemory(std::shared_ptr<const Bytes> jpeg) : jpeg_(std::move(jpeg)) {}

    [[nodiscard]] std::shared_ptr<const Bytes> read() const override { return jpeg_; }
    void write(std::shared_ptr<const Bytes> /*jpeg*/) const override {}

private:
    const std::shared_ptr<const Bytes> jpeg_;
};

struct PictureSize {
    int width = 0;  ///< pixels
    int height = 0; ///< pixels

    bool operator==(const PictureSize &) const = default;
    [[nodiscard]] bool fitsInto(PictureSize other) const
    {
        return width <= other.width && height <= other.height;
    }
};

/// The size of the copy: 640 pixels on the shorter side fill a square cell of three columns on a screen that
/// is 1920 wide, and on any phone at three pixels a point.
/// @return nothing for a picture that is as small itself.
std::optional<PictureSize> reducedSize(PictureSize picture);

/// The copy of a picture that has been reduced to that size already.
Result<std::shared_ptr<const Bytes>> encodeReduced(const PixelBuffer &pixels);

/// The copy of a still from its frame, for a fraction of what encoding the still takes: from every row or, of
/// many, every second, third …
/// @return an error for a frame without an image buffer, a damaged one, and one as small as a copy.
Result<std::shared_ptr<const Bytes>> encodeReduced(const VideoFrame &frame);

} // namespace skyflare
