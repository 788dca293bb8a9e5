#include "ui/PictureItem.h"

#include "ui/AspectFill.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSGImageNode>

namespace skyflare {

PictureItem::PictureItem(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PictureItem::setPlacement(Placement placement)
{
    placement_ = placement;
    update();
}

void PictureItem::setPicture(QImage picture)
{
    picture_ = std::move(picture);
    isNew_ = true;
    update();
}

double PictureItem::pixelRatio() const
{
    return window() ? window()->effectiveDevicePixelRatio() : qGuiApp->devicePixelRatio();
}

QSGNode *PictureItem::updatePaintNode(QSGNode *node, UpdatePaintNodeData * /*data*/)
{
    pictureWillBeShown();
    auto *image = static_cast<QSGImageNode *>(node);
    if (picture_.isNull() || size().isEmpty()) {
        delete image; // NOLINT(cppcoreguidelines-owning-memory): the scene graph gave it away
        return nullptr;
    }
    const bool isFirst = image == nullptr;
    if (isFirst) {
        image = window()->createImageNode();
        image->setOwnsTexture(true);
    }
    if (isFirst || isNew_) {
        const bool isOpaque = !picture_.hasAlphaChannel();
        image->setTexture(window()->createTextureFromImage(
            picture_, isOpaque ? QQuickWindow::TextureIsOpaque : QQuickWindow::TextureHasAlphaChannel));
    }
    isNew_ = false;
    const QSizeF pixels = picture_.size();
    // Pixel for pixel, nothing is interpolated: without a graphics card that is more work, for which Qt 6.4
    // has main wait until other threads have done their part, and those may wait for a core.
    const bool fitsExactly = placement_ == Placement::Fill && pixels == size() * pixelRatio();
    image->setFiltering(fitsExactly ? QSGTexture::Nearest : QSGTexture::Linear);
    image->setSourceRect(placement_ == Placement::Fill && !fitsExactly ? aspectFillRegion(pixels, size())
                                                                       : QRectF(QPointF(), pixels));
    image->setRect(placement_ == Placement::Fill  ? boundingRect()
                   : placement_ == Placement::Fit ? aspectFitRect(pixels, size())
                                                  : QRectF(QPointF(), pixels / picture_.devicePixelRatio()));
    return image;
}

} // namespace skyflare
