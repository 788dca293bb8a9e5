#include "ui/PreviewFeed.h"

#include "platform/camera/FramePlanes.h"
#include "platform/image/FrameConversion.h"
#include "ui/AspectFill.h"

#include <QThreadPool>
#include <algorithm>
#include <cmath>
#include <utility>

namespace skyflare {

namespace {

/// One thread for all previews; there is one at a time.
QThreadPool &previewThread()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    return pool;
}

PictureRegion regionOf(const VideoFrame &frame, QSize pixels)
{
    const QRectF seen = aspectFillRegion(QSizeF(frame.width, frame.height), pixels);
    const std::int64_t x = std::llround(seen.x());
    const std::int64_t y = std::llround(seen.y());
    return {x, y, std::clamp<std::int64_t>(std::llround(seen.width()), 1, frame.width - x),
            std::clamp<std::int64_t>(std::llround(seen.height()), 1, frame.height - y)};
}

PixelBuffer croppedPixels(const PixelBuffer &whole, const PictureRegion &region)
{
    auto part = PixelBuffer::ofSize(static_cast<int>(region.width), static_cast<int>(region.height));
    for (int y = 0; y < part.height; ++y) {
        const auto row = whole.row(static_cast<int>(region.y) + y);
        std::ranges::copy(row.subspan(static_cast<std::size_t>(region.x) * 3, part.rowBytes()),
                          part.row(y).begin());
    }
    return part;
}

} // namespace

PreviewFeed::PreviewFeed(std::function<void()> arrived) : arrived_(std::move(arrived)) {}

void PreviewFeed::setTargetSize(QSize pixels)
{
    const std::scoped_lock lock(mutex_);
    target_ = pixels;
}

void PreviewFeed::show(const VideoFrame &frame)
{
    QSize pixels;
    {
        const std::scoped_lock lock(mutex_);
        frameSize_ = QSize(frame.width, frame.height);
        if (isBusy_ || !isFetched_ || !arrived_ || target_.isEmpty())
            return;
        isBusy_ = true;
        pixels = target_;
    }
    previewThread().start([self = shared_from_this(), frame, pixels] { self->turn(frame, pixels); });
}

void PreviewFeed::turn(const VideoFrame &frame, QSize pixels)
{
    QImage &picture = freePicture(pixels);
    const PictureScaler::Target target{
        .pixels = {reinterpret_cast<std::uint32_t *>(picture.bits()),
                   static_cast<std::size_t>(picture.sizeInBytes()) / sizeof(std::uint32_t)},
        .width = picture.width(),
        .height = picture.height(),
        .stride = picture.bytesPerLine() / static_cast<std::ptrdiff_t>(sizeof(std::uint32_t)),
    };
    const auto region = regionOf(frame, pixels);
    bool isTurned = false;
    if (frame.format == PixelFormat::Jpeg) {
        if (const auto whole = convertToRgb(frame)) {
            scaler_.scale(PixelRows(croppedPixels(*whole, region)), target);
            isTurned = true;
        }
    } else {
        const VideoFrame seen = cropped(frame, region);
        if (const auto rows = FrameRows::of(seen)) {
            scaler_.scale(*rows, target);
            isTurned = true;
        }
    }
    const std::scoped_lock lock(mutex_);
    isBusy_ = false;
    if (!isTurned)
        return;
    newest_ = picture;
    isFetched_ = false;
    if (arrived_)
        arrived_();
}

/// One of the right size that nobody else looks at any more, so that it is written without a copy.
QImage &PreviewFeed::freePicture(QSize pixels)
{
    for (QImage &picture : pictures_) {
        if (picture.size() == pixels && picture.isDetached())
            return picture;
    }
    // None: of the size before, or still seen. The oldest place is as good as any.
    std::rotate(pictures_.begin(), pictures_.begin() + 1, pictures_.end());
    pictures_.back() = QImage(pixels, QImage::Format_RGB32);
    return pictures_.back();
}

QImage PreviewFeed::fetch()
{
    const std::scoped_lock lock(mutex_);
    isFetched_ = true;
    return std::exchange(newest_, QImage());
}

QSize PreviewFeed::frameSize() const
{
    const std::scoped_lock lock(mutex_);
    return frameSize_;
}

void PreviewFeed::close()
{
    const std::scoped_lock lock(mutex_);
    arrived_ = nullptr;
}

} // namespace skyflare
