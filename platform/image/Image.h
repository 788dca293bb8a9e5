#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/Result.h"
#include "platform/image/AreaReducer.h"
#include "platform/image/FrameConversion.h"
#include "platform/image/PixelBuffer.h"
#include "platform/image/PngEncoder.h"
#include "platform/image/ReducedPicture.h"
#include "platform/image/VideoFrame.h"

#include <memory>
#include <optional>

namespace skyflare {

/// A still picture: encoded as PNG or JPEG, decoded only when its pixels are asked for.
///
/// Whatever the encoded picture is like (grey, palette, 16 bits, alpha, CMYK), its pixels are 8-bit RGB.
/// A small copy may travel with it, from which it is shown small: see ReducedPicture.
/// Copying an Image copies no bytes. Threads: any.
class Image {
public:
    /// A picture from its encoded bytes (PNG, ISO/IEC 15948, or JPEG, ISO/IEC 10918-1). Looks at the
    /// signature, the header, and whether the end is there; a picture cut short is an error. Reads a few
    /// hundred bytes of the source, not all of it.
    static Result<Image> fromData(std::shared_ptr<const ByteSource> encoded);
    static Result<Image> fromData(Bytes encoded);

    [[nodiscard]] int width() const;  ///< pixels
    [[nodiscard]] int height() const; ///< pixels

    /// The picture as PNG: its own bytes if it came as PNG, else decoded and encoded, losslessly.
    [[nodiscard]] Result<std::shared_ptr<const Bytes>> pngData() const;

    /// All pixels. An error where the bytes turn out to be damaged or their row is gone.
    [[nodiscard]] Result<PixelBuffer> pixels() const;

    /// The picture reduced to fit into a box of `maxWidth` × `maxHeight`, its shape kept; never enlarged.
    /// From the small copy where that is large enough; one that is missing or damaged is made anew.
    [[nodiscard]] Result<PixelBuffer> thumbnail(int maxWidth, int maxHeight) const;

    /// Something smaller than thumbnail(), to be shown until that comes: the small copy. Nothing where there
    /// is none, and where thumbnail() is as quick.
    [[nodiscard]] std::optional<PixelBuffer> quickThumbnail(int maxWidth, int maxHeight) const;

    /// The same picture with a place for its small copy; null for none.
    [[nodiscard]] Image withReduced(std::shared_ptr<const ReducedPicture> reduced) const;
    [[nodiscard]] const std::shared_ptr<const ReducedPicture> &reducedPicture() const { return reduced_; }

private:
    struct Contents;
    explicit Image(std::shared_ptr<const Contents> contents) : contents_(std::move(contents)) {}

    [[nodiscard]] PictureSize size() const { return {width(), height()}; }
    [[nodiscard]] std::optional<PictureSize> copySize() const;
    [[nodiscard]] std::optional<PixelBuffer> fromReduced(PictureSize size) const;
    [[nodiscard]] Result<PixelBuffer> decodeAt(PictureSize size) const;

    std::shared_ptr<const Contents> contents_;
    std::shared_ptr<const ReducedPicture> reduced_;
};

} // namespace skyflare
