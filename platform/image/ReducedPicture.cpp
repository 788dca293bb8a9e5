#include "platform/image/ReducedPicture.h"

#include "platform/image/AreaReducer.h"
#include "platform/image/FrameConversion.h"
#include "platform/image/Image.h"
#include "platform/image/JpegEncoder.h"

#include <algorithm>

namespace skyflare {
namespace {

constexpr int shortSide = 640; // pixels
constexpr int quality = 85;    // no difference is seen at this size

/// Rows of the frame that are averaged into one of the copy: enough that noise goes.
constexpr int rowsARow = 2;

Result<PixelBuffer> reducedFrame(const VideoFrame &frame, PictureSize size)
{
    const auto rows = FrameRows::of(frame);
    if (!rows)
        return rows.error();
    const int step = std::max(1, frame.height / (size.height * rowsARow));
    const int taken = (frame.height - 1) / step + 1;
    AreaReducer reducer(frame.width, taken, size.width, size.height);
    Bytes room(rows->rowBytes());
    for (int y = 0; y < frame.height; y += step)
        reducer.addRow({rows->row(y, room), room.size()});
    return reducer.take();
}

Result<PixelBuffer> reducedStill(const VideoFrame &frame, PictureSize size)
{
    if (frame.format != PixelFormat::Jpeg)
        return reducedFrame(frame, size);
    // A copy of the bytes, for a picture keeps its own; a few MB.
    const auto still =
        Image::fromData(Bytes(frame.planes[0].data, frame.planes[0].data + frame.planes[0].stride));
    if (!still)
        return still.error();
    return still->thumbnail(size.width, size.height);
}

} // namespace

std::optional<PictureSize> reducedSize(PictureSize picture)
{
    const int side = std::min(picture.width, picture.height);
    if (side <= shortSide)
        return {};
    const auto scaled = [side](int length) {
        return static_cast<int>((std::int64_t{2} * length * shortSide + side) / (std::int64_t{2} * side));
    };
    return PictureSize{scaled(picture.width), scaled(picture.height)};
}

Result<std::shared_ptr<const Bytes>> encodeReduced(const PixelBuffer &pixels)
{
    auto jpeg = encodeJpeg(pixels, quality);
    if (!jpeg)
        return jpeg.error();
    return std::make_shared<const Bytes>(*std::move(jpeg));
}

Result<std::shared_ptr<const Bytes>> encodeReduced(const VideoFrame &frame)
{
    const auto size = reducedSize({frame.width, frame.height});
    if (!size)
        return Error{"picture", 0, "the picture is small itself"};
    const auto pixels = reducedStill(frame, *size);
    return pixels ? encodeReduced(*pixels) : pixels.error();
}

} // namespace skyflare
