#include "ui/PhotoView.h"

#include "ui/PictureDelivery.h"
#include "ui/PixelImage.h"

#include <QElapsedTimer>
#include <QThread>
#include <QThreadPool>
#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

/// For the photos of all views. Each decodes with the bytes of a whole photo in memory: a few at a time.
QThreadPool &photoThreads()
{
    constexpr int mostAtOnce = 4;
    static QThreadPool pool;
    pool.setMaxThreadCount(std::min(QThread::idealThreadCount(), mostAtOnce));
    return pool;
}

/// Of what is asked for from now on. Later is higher, for it is what is looked at now; what is asked for in
/// one breath, like a screen full of photos, is done in its order.
int priorityNow()
{
    constexpr qint64 breathMs = 100;
    static const QElapsedTimer sinceFirst = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return static_cast<int>(sinceFirst.elapsed() / breathMs);
}

} // namespace

/// One photo on its way from a worker.
struct PhotoView::Request {
    Image image;
    QSize box;
    std::shared_ptr<PictureDelivery> delivery;
    int priority = priorityNow();

    /// What there is at once, if that is not all; the rest when no one waits for the like.
    static void begin(const std::shared_ptr<Request> &request)
    {
        if (!request->delivery->isWanted())
            return;
        const auto quick = request->image.quickThumbnail(request->box.width(), request->box.height());
        if (!quick) {
            request->finish();
            return;
        }
        request->delivery->deliver(toImage(*quick));
        photoThreads().start([request] { request->finish(); }, 2 * request->priority);
    }
    void finish()
    {
        if (!delivery->isWanted())
            return;
        const auto pixels = image.thumbnail(box.width(), box.height());
        delivery->deliver(pixels ? toImage(*pixels) : QImage());
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
    auto delivery = std::make_shared<PictureDelivery>(*this, [this](const QImage &picture) {
        setPicture(picture);
        emit pictureChanged();
    });
    request_ = std::make_shared<Request>(Request{*outlet_->image(), box, std::move(delivery)});
    photoThreads().start([request = request_] { Request::begin(request); }, 2 * request_->priority + 1);
}

void PhotoView::giveUp()
{
    if (request_)
        request_->delivery->giveUp();
    request_ = nullptr;
}

} // namespace skyflare
