#pragma once

#include "ui/PictureItem.h"

namespace skyflare {

/// An item that is drawn with a QPainter, at the screen's own resolution: at most once a frame, and only
/// after redraw() or a new size.
///
/// Threads: main.
class DrawnItem : public skyflare::PictureItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit DrawnItem(QQuickItem *parent = nullptr);

protected:
    void redraw() { polish(); }
    virtual void draw(QPainter &painter) = 0; ///< in logical pixels

    void updatePolish() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void componentComplete() override;
};

} // namespace skyflare
