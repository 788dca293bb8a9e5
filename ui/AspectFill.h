#pragma once

#include <QRectF>
#include <QSizeF>
#include <algorithm>

namespace skyflare {

/// The part of a picture, in its own units, that is seen when it fills a view and keeps its shape: the middle
/// of it. Empty where either has no size. Any thread.
inline QRectF aspectFillRegion(QSizeF picture, QSizeF view)
{
    if (picture.isEmpty() || view.isEmpty())
        return {};
    const double scale = std::max(view.width() / picture.width(), view.height() / picture.height());
    const QSizeF seen = view / scale;
    return {QPointF((picture.width() - seen.width()) / 2, (picture.height() - seen.height()) / 2), seen};
}

/// Where in a view a picture lies that is fitted into it and keeps its shape.
inline QRectF aspectFitRect(QSizeF picture, QSizeF view)
{
    if (picture.isEmpty() || view.isEmpty())
        return {};
    const QSizeF shown = picture.scaled(view, Qt::KeepAspectRatio);
    return {QPointF((view.width() - shown.width()) / 2, (view.height() - shown.height()) / 2), shown};
}

} // namespace skyflare
