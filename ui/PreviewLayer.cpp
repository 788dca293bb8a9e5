#include "ui/PreviewLayer.h"

#include "ui/AspectFill.h"

namespace skyflare {

PreviewLayer::PreviewLayer(CaptureSession &session)
    // close() comes before the end of this, under the lock that the call holds.
    : feed_(std::make_shared<PreviewFeed>(
          [this] { QMetaObject::invokeMethod(this, &PreviewLayer::pictureArrived, Qt::QueuedConnection); }))
{
    session.setPreview(feed_);
}

PreviewLayer::~PreviewLayer()
{
    feed_->close();
}

void PreviewLayer::setBounds(QSizeF size, double pixelRatio)
{
    size_ = size;
    feed_->setTargetSize((size * pixelRatio).toSize());
}

Point PreviewLayer::captureDevicePointOfInterest(QPointF point) const
{
    const QSizeF frame = feed_->frameSize();
    const QRectF seen = aspectFillRegion(frame, size_);
    if (seen.isEmpty())
        return {0.5, 0.5};
    const double x = seen.x() + point.x() / size_.width() * seen.width();
    const double y = seen.y() + point.y() / size_.height() * seen.height();
    return {std::clamp(x / frame.width(), 0.0, 1.0), std::clamp(y / frame.height(), 0.0, 1.0)};
}

} // namespace skyflare
