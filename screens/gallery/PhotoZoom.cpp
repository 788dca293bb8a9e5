#include "screens/gallery/PhotoZoom.h"

#include <algorithm>

namespace skyflare {

namespace {

constexpr double leastMost = 3;      // a small photo can be looked at from near as well
constexpr double pixelsPerPixel = 2; // at most, of the screen for one of the photo
constexpr double leastToggle = 2;

} // namespace

void PhotoZoom::setUp(QSizeF photo, const QRectF &room, double pixelRatio)
{
    const QSizeF before = photoRect().size();
    photo_ = photo;
    room_ = room;
    pixelRatio_ = pixelRatio;
    if (!before.isEmpty()) // what was in the middle stays there
        place_.offset *= photoRect().width() / before.width();
    keepInRoom();
}

double PhotoZoom::fittedScale() const
{
    return std::min(room_.width() / photo_.width(), room_.height() / photo_.height());
}

void PhotoZoom::zoomBy(double factor, QPointF point)
{
    if (photo_.isEmpty() || room_.isEmpty())
        return;
    const double most = std::max(leastMost, pixelsPerPixel / (fittedScale() * pixelRatio_));
    const double wanted = std::clamp(place_.factor * factor, 1.0, most);
    const QPointF fromMiddle = point - (room_.center() + place_.offset);
    place_.offset += fromMiddle * (1 - wanted / place_.factor);
    place_.factor = wanted;
    keepInRoom();
}

void PhotoZoom::toggle(QPointF point)
{
    if (isZoomed())
        fit();
    else if (!photo_.isEmpty() && !room_.isEmpty())
        zoomBy(std::max(leastToggle, 1 / (fittedScale() * pixelRatio_)), point);
}

void PhotoZoom::panBy(QPointF distance)
{
    place_.offset += distance;
    keepInRoom();
}

void PhotoZoom::keepInRoom()
{
    const QSizeF shown = photoRect().size();
    const double mostX = std::max(0.0, (shown.width() - room_.width()) / 2);
    const double mostY = std::max(0.0, (shown.height() - room_.height()) / 2);
    place_.offset = {std::clamp(place_.offset.x(), -mostX, mostX),
                     std::clamp(place_.offset.y(), -mostY, mostY)};
}

QRectF PhotoZoom::photoRect() const
{
    if (photo_.isEmpty() || room_.isEmpty())
        return {};
    QRectF rect(QPointF(), photo_ * (fittedScale() * place_.factor));
    rect.moveCenter(room_.center() + place_.offset);
    return rect;
}

} // namespace skyflare
