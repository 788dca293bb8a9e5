#include "ui/LightCurveView.h"

#include <QPainter>
#include <QPolygonF>

namespace skyflare {

namespace {

constexpr double lineWidth = 2;
constexpr double bracketWidth = 8;
constexpr double gap = 6; // between curve and bracket

} // namespace

void LightCurveView::setCurve(LightCurve *curve)
{
    if (curve_ == curve)
        return;
    if (curve_)
        disconnect(curve_, nullptr, this, nullptr);
    curve_ = curve;
    if (curve_)
        connect(curve_, &LightCurve::changed, this, [this] { redraw(); });
    emit curveChanged();
    redraw();
}

void LightCurveView::setColor(const QColor &color)
{
    color_ = color;
    emit colorChanged();
    redraw();
}

void LightCurveView::setRiseColor(const QColor &color)
{
    riseColor_ = color;
    emit colorChanged();
    redraw();
}

void LightCurveView::draw(QPainter &painter)
{
    if (!curve_)
        return;
    const Plot plot{
        QRectF(lineWidth / 2, lineWidth / 2, width() - bracketWidth - gap - lineWidth, height() - lineWidth),
        curve_->range()};
    drawCurve(painter, plot);
    drawRise(painter, plot);
}

double LightCurveView::Plot::yOf(double brightness) const
{
    return area.bottom() - area.height() * (brightness - range.bottom) / (range.top - range.bottom);
}

void LightCurveView::drawCurve(QPainter &painter, const Plot &plot) const
{
    const auto &samples = curve_->samples();
    if (samples.size() < 2)
        return;
    const double now = samples.back().uptimeSeconds;
    const double pixelsPerSecond = plot.area.width() / LightCurve::spanSeconds;
    QPolygonF line;
    line.reserve(static_cast<qsizetype>(samples.size()));
    for (const LightCurve::Sample &sample : samples) {
        const double x = plot.area.right() - (now - sample.uptimeSeconds) * pixelsPerSecond;
        line.append({std::max(x, plot.area.left()), plot.yOf(sample.brightness)});
    }
    painter.setPen(QPen(color_, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(line);
}

void LightCurveView::drawRise(QPainter &painter, const Plot &plot) const
{
    const double from = curve_->samples().empty() ? plot.range.bottom : curve_->samples().back().brightness;
    const double left = plot.area.right() + gap + lineWidth / 2;
    const double right = left + bracketWidth - lineWidth;
    const double foot = plot.yOf(from);
    const double head = plot.yOf(from + curve_->rise());
    painter.setPen(QPen(riseColor_, lineWidth * 0.75, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(left, foot), QPointF(right, foot));
    painter.drawLine(QPointF(left, head), QPointF(right, head));
    painter.drawLine(QPointF((left + right) / 2, foot), QPointF((left + right) / 2, head));
}

} // namespace skyflare
