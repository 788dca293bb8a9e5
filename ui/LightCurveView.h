#pragma once

#include "ui/DrawnItem.h"
#include "ui/LightCurve.h"

#include <QColor>
#include <QPointer>

namespace skyflare {

/// Draws a LightCurve, and to its right, at the same scale, the rise that would trigger from where the light
/// is now.
///
/// Threads: main.
class LightCurveView : public skyflare::DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skyflare::LightCurve *curve READ curve WRITE setCurve NOTIFY curveChanged)
    Q_PROPERTY(QColor color MEMBER color_ WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(QColor riseColor MEMBER riseColor_ WRITE setRiseColor NOTIFY colorChanged)

public:
    [[nodiscard]] LightCurve *curve() const { return curve_; }
    void setCurve(LightCurve *curve);
    void setColor(const QColor &color);
    void setRiseColor(const QColor &color);

signals:
    void curveChanged();
    void colorChanged();

protected:
    void draw(QPainter &painter) override;

private:
    struct Plot {
        QRectF area;
        LightCurve::Range range;
        [[nodiscard]] double yOf(double brightness) const;
    };
    void drawCurve(QPainter &painter, const Plot &plot) const;
    void drawRise(QPainter &painter, const Plot &plot) const;

    QPointer<LightCurve> curve_;
    QColor color_ = Qt::white;
    QColor riseColor_ = Qt::gray;
};

} // namespace skyflare
