#include "screens/gallery/ZoomablePhoto.h"

#include <QSGImageNode>
#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

constexpr double mostPixels = 16.8e6; // decoded: 64 MiB
constexpr int glideMs = 220;
constexpr double wheelDoubling = 360; // in eighths of a degree: three notches

} // namespace

ZoomablePhoto::ZoomablePhoto(QQuickItem *parent) : PictureItem(parent)
{
    setPlacement(Placement::Fit);
    setClip(true);
    glide_.setStartValue(0.0);
    glide_.setEndValue(1.0);
    glide_.setDuration(glideMs);
    glide_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&glide_, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        const double part = value.toDouble();
        const PhotoZoom::Place between{glideFrom_.factor + part * (glideTo_.factor - glideFrom_.factor),
                                       glideFrom_.offset + part * (glideTo_.offset - glideFrom_.offset)};
        zoom_.setPlace(part < 1 ? between : glideTo_); // without what was lost in rounding
        zoomed();
    });
    connect(&firstLoader_, &PhotoLoader::loaded, this, [this](const QImage &picture) {
        if (!fitted_.isNull()) // the sharp one was sooner
            return;
        fitted_ = picture;
        showPicture();
    });
    connect(&fittedLoader_, &PhotoLoader::loaded, this, [this](const QImage &picture) {
        setDamaged(picture.isNull());
        if (!picture.isNull())
            fitted_ = picture;
        showPicture();
    });
    connect(&wholeLoader_, &PhotoLoader::loaded, this, [this](const QImage &picture) {
        setDamaged(picture.isNull());
        whole_ = picture;
        showPicture();
    });
}

void ZoomablePhoto::setOutlet(ImageOutlet *outlet)
{
    if (outlet_ == outlet)
        return;
    if (outlet_)
        disconnect(outlet_, nullptr, this, nullptr);
    outlet_ = outlet;
    if (outlet_)
        connect(outlet_, &ImageOutlet::imageChanged, this, &ZoomablePhoto::renew);
    renew();
    emit outletChanged();
}

/// Another photo.
void ZoomablePhoto::renew()
{
    firstLoader_.cancel();
    fittedLoader_.cancel();
    wholeLoader_.cancel();
    fittedBox_ = {};
    isWhole_ = false;
    fitted_ = whole_ = {};
    showPicture();
    setDamaged(false);
    zoom_.fit();
    measure();
}

void ZoomablePhoto::setRoom(const QRectF &room)
{
    if (room_ == room)
        return;
    room_ = room;
    measure();
    emit roomChanged();
}

void ZoomablePhoto::itemChange(ItemChange change, const ItemChangeData &data)
{
    PictureItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        measure();
}

void ZoomablePhoto::measure()
{
    const bool hasImage = outlet_ && outlet_->image();
    const QSizeF photo = hasImage ? QSizeF(outlet_->image()->width(), outlet_->image()->height()) : QSizeF();
    glide_.stop();
    zoom_.setUp(photo, room_, pixelRatio());
    zoomed();
}

/// The photo lies elsewhere, or is of another size.
void ZoomablePhoto::zoomed()
{
    update();
    polish();
    emit zoomChanged();
}

// --- Decoding

void ZoomablePhoto::updatePolish()
{
    if (!outlet_ || !outlet_->image() || zoom_.photoRect().isEmpty() ||
        glide_.state() == QAbstractAnimation::Running)
        return;
    loadFitted();
    loadWhole();
}

/// At the size that it has while it is fitted, in physical pixels; again where the room has grown, or is much
/// smaller.
void ZoomablePhoto::loadFitted()
{
    const Image &image = *outlet_->image();
    const QSizeF full(image.width(), image.height());
    const QSizeF seen = full.scaled(room_.size() * pixelRatio(), Qt::KeepAspectRatio).boundedTo(full);
    const QSize box(static_cast<int>(std::ceil(seen.width())), static_cast<int>(std::ceil(seen.height())));
    if (fittedBox_.width() >= box.width() && fittedBox_.width() <= 2 * box.width())
        return;
    if (fittedBox_.isEmpty())
        firstLoader_.load(image, box, PhotoLoader::Wish::AtOnce);
    fittedBox_ = box;
    fittedLoader_.load(image, box);
}

/// All pixels while the photo is seen from so near that they show, and no longer.
void ZoomablePhoto::loadWhole()
{
    const Image &image = *outlet_->image();
    const bool isNeeded = isZoomed() && fittedBox_.width() < image.width();
    if (isNeeded == isWhole_)
        return;
    isWhole_ = isNeeded;
    if (!isNeeded) {
        wholeLoader_.cancel();
        whole_ = {};
        showPicture();
        return;
    }
    const QSizeF full(image.width(), image.height());
    const QSizeF most = full * std::min(1.0, std::sqrt(mostPixels / (full.width() * full.height())));
    wholeLoader_.load(
        image, {static_cast<int>(std::ceil(most.width())), static_cast<int>(std::ceil(most.height()))});
}

void ZoomablePhoto::showPicture()
{
    setPicture(whole_.isNull() ? fitted_ : whole_);
}

void ZoomablePhoto::setDamaged(bool isDamaged)
{
    if (isDamaged_ == isDamaged)
        return;
    isDamaged_ = isDamaged;
    emit isDamagedChanged();
}

QSGNode *ZoomablePhoto::updatePaintNode(QSGNode *node, UpdatePaintNodeData *data)
{
    auto *const image = static_cast<QSGImageNode *>(PictureItem::updatePaintNode(node, data));
    if (image == nullptr)
        return nullptr;
    const QRectF rect = zoom_.photoRect();
    const double ratio = pixelRatio();
    // A fitted picture lies on whole pixels, where it is as sharp as it was decoded.
    const QRect whole = QRectF(rect.topLeft() * ratio, rect.size() * ratio).toRect();
    image->setRect(isZoomed() ? rect
                              : QRectF(QPointF(whole.topLeft()) / ratio, QSizeF(whole.size()) / ratio));
    return image;
}

// --- Moving

/// Where it is, or is going.
PhotoZoom ZoomablePhoto::target() const
{
    PhotoZoom wanted = zoom_;
    if (glide_.state() == QAbstractAnimation::Running)
        wanted.setPlace(glideTo_);
    return wanted;
}

void ZoomablePhoto::glideTo(const PhotoZoom &wanted)
{
    glide_.stop();
    glideFrom_ = zoom_.place();
    glideTo_ = wanted.place();
    glide_.start();
}

void ZoomablePhoto::toggle(QPointF point)
{
    PhotoZoom wanted = target();
    wanted.toggle(point);
    glideTo(wanted);
}

void ZoomablePhoto::zoomBy(double factor)
{
    PhotoZoom wanted = target();
    wanted.zoomBy(factor, room_.center());
    glideTo(wanted);
}

void ZoomablePhoto::fit()
{
    PhotoZoom wanted = target();
    wanted.fit();
    glideTo(wanted);
}

void ZoomablePhoto::panByRooms(double x, double y)
{
    PhotoZoom wanted = target();
    wanted.panBy({x * room_.width(), y * room_.height()});
    glideTo(wanted);
}

void ZoomablePhoto::wheel(double eighthsOfDegree, QPointF point)
{
    glide_.stop();
    zoom_.zoomBy(std::exp2(eighthsOfDegree / wheelDoubling), point);
    zoomed();
}

void ZoomablePhoto::beginGesture(QPointF point)
{
    glide_.stop();
    gestureStart_ = zoom_;
    gesturePoint_ = point;
}

void ZoomablePhoto::gestureTo(double scale, QPointF point)
{
    zoom_ = gestureStart_;
    zoom_.zoomBy(scale, gesturePoint_);
    zoom_.panBy(point - gesturePoint_);
    zoomed();
}

} // namespace skyflare
