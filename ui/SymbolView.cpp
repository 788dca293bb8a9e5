#include "ui/SymbolView.h"

#include <QPainter>
#include <QSvgRenderer>
#include <array>

namespace skyflare {

namespace {

constexpr double gridUnits = 24; // a symbol's own width and height

/// The ink of a symbol drawn in white and black as an image of one colour.
void tint(QImage &symbol, const QColor &color)
{
    // Premultiplied white: each channel is alpha; under black it is 0, so one channel is the ink.
    std::array<QRgb, 256> inks{};
    for (std::size_t ink = 0; ink < inks.size(); ++ink) {
        const auto alpha = static_cast<int>(ink) * color.alpha() / 255;
        inks[ink] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
    }
    for (int y = 0; y < symbol.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(symbol.scanLine(y));
        for (int x = 0; x < symbol.width(); ++x)
            row[x] = inks[static_cast<std::size_t>(qRed(row[x]))];
    }
}

} // namespace

SymbolView::SymbolView(QQuickItem *parent) : DrawnItem(parent)
{
    setImplicitSize(gridUnits, gridUnits);
}

void SymbolView::setName(const QString &name)
{
    if (name_ == name)
        return;
    name_ = name;
    emit nameChanged();
    redraw();
}

void SymbolView::setColor(const QColor &color)
{
    if (color_ == color)
        return;
    color_ = color;
    emit colorChanged();
    redraw();
}

void SymbolView::draw(QPainter &painter)
{
    if (name_.isEmpty())
        return;
    QSvgRenderer renderer(":/Skyflare/Ui/symbols/" + name_ + ".svg");
    if (!renderer.isValid()) {
        qWarning("There is no symbol \"%s\"", qUtf8Printable(name_));
        return;
    }
    const double ratio = pixelRatio();
    QImage symbol((size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    symbol.fill(Qt::transparent);
    QPainter ink(&symbol);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(&ink);
    ink.end();
    tint(symbol, color_);
    symbol.setDevicePixelRatio(ratio);
    painter.drawImage(QPointF(), symbol);
}

} // namespace skyflare
