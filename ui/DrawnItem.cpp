#include "ui/DrawnItem.h"

#include <QPainter>
#include <cmath>

namespace skyflare {

DrawnItem::DrawnItem(QQuickItem *parent) : PictureItem(parent)
{
    setPlacement(Placement::TopLeft);
}

void DrawnItem::updatePolish()
{
    const double ratio = pixelRatio();
    const QSize pixels(static_cast<int>(std::ceil(width() * ratio)),
                       static_cast<int>(std::ceil(height() * ratio)));
    if (pixels.isEmpty()) {
        setPicture({});
        return;
    }
    QImage picture(pixels, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.end();
    setPicture(std::move(picture));
}

void DrawnItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    PictureItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        redraw();
}

void DrawnItem::itemChange(ItemChange change, const ItemChangeData &data)
{
    PictureItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        redraw();
}

void DrawnItem::componentComplete()
{
    PictureItem::componentComplete();
    redraw();
}

} // namespace skyflare
