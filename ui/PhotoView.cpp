#include "ui/PhotoView.h"

#include <QThreadPool>
#include <cmath>
#include <mutex>

namespace skyflare {

namespace {

QImage toImage(const PixelBuffer &pixels)
{
    QImage image(pixels.width, pixels.height, QImage::Format_RGB32);
    for (int y = 0; y < pixels.height; ++y) {
        const auto rgb = pixels.row(y);
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (std::size_t x = 0; x < static_cast<std::size_t>(pixels.width); ++x)
            row[x] = qRgb(rgb[x * 3], rgb[x * 3 + 1], rgb[x * 3 + 2]);
    }
    return image;
}

} // namespace

/// One photo on its way from a worker to the view that asked for it, if that still wants it.
struct PhotoView::Request {
    Image image;
    QSize box;
    std::mutex mutex;
    PhotoView *view; ///< nullptr once given up

    Request(Image from, QSize into, PhotoView *for_) : image(std::move(from)), box(into), view(for_) {}

    [[nodiscard]] bool isWanted()
    {
        const std::scoped_lock lock(mutex);
        return view != nullptr;
    }
    void deliver(QImage picture)
    {
        const std::scoped_lock lock(mutex);
        if (view == nullptr)
            return;
        QMetaObject::invokeMethod(
            view,
            [target = view, picture = std::move(picture)]() mutable {
                target->setPicture(std::move(picture));
                emit target->pictureChanged();
            },
            Qt::QueuedConnection);
    }
};

PhotoView::PhotoView(QQuickItem *parent) : PictureItem(parent)
{
    setPlacement(Placement::Fill);
}

PhotoView::~PhotoView()
{
    giveUp();
}

void PhotoView::setOutlet(ImageOutlet *outlet)
{
    if (outlet_ == outlet)
        return;
    if (outlet_)
        disconnect(outlet_, nullptr, this, nullptr);
    outlet_ = outlet;
    const auto renew = [this] {
        giveUp();
        polish();
    };
    if (outlet_)
        connect(outlet_, &ImageOutlet::imageChanged, this, renew);
    renew();
    emit outletChanged();
}

void PhotoView::setFillMode(FillMode fillMode)
{
    if (fillMode_ == fillMode)
        return;
    fillMode_ = fillMode;
    setPlacement(fillMode == AspectFill ? Placement::Fill : Placement::Fit);
    polish();
    emit fillModeChanged();
}

void PhotoView::updatePolish()
{
    decode();
}

void PhotoView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    PictureItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        polish();
}

void PhotoView::itemChange(ItemChange change, const ItemChangeData &data)
{
    PictureItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        polish();
}

/// The box in pixels that the photo has to fit into so that the view is filled, or fitted, without enlarging.
QSize PhotoView::neededSize() const
{
    const QSizeF seen = size() * pixelRatio();
    const Image &image = *outlet_->image();
    const QSizeF full(image.width(), image.height());
    const auto mode = fillMode_ == AspectFill ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio;
    const QSizeF box = full.scaled(seen, mode);
    return {static_cast<int>(std::ceil(box.width())), static_cast<int>(std::ceil(box.height()))};
}

void PhotoView::decode()
{
    if (!outlet_ || !outlet_->image()) {
        giveUp();
        setPicture({});
        return;
    }
    if (size().isEmpty())
        return;
    const QSize box = neededSize();
    if (request_ && request_->box == box)
        return;
    giveUp();
    request_ = std::make_shared<Request>(*outlet_->image(), box, this);
    QThreadPool::globalInstance()->start([request = request_] {
        if (!request->isWanted())
            return;
        const auto pixels = request->image.thumbnail(request->box.width(), request->box.height());
        request->deliver(pixels ? toImage(*pixels) : QImage());
    });
}

void PhotoView::giveUp()
{
    const auto request = std::move(request_);
    request_ = nullptr;
    if (!request)
        return;
    const std::scoped_lock lock(request->mutex);
    request->view = nullptr;
}

} // namespace skyflare
