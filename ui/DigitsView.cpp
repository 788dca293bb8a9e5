#include "ui/DigitsView.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <cmath>

namespace skyflare {

DigitsView::DigitsView(QQuickItem *parent) : DrawnItem(parent), font_(QGuiApplication::font())
{
    measure();
}

void DigitsView::setText(const QString &text)
{
    if (text_ == text)
        return;
    text_ = text;
    emit textChanged();
    measure();
}

void DigitsView::setColor(const QColor &color)
{
    if (color_ == color)
        return;
    color_ = color;
    emit colorChanged();
    redraw();
}

void DigitsView::setPixelSize(int size)
{
    font_.setPixelSize(size);
    emit fontChanged();
    measure();
}

void DigitsView::setWeight(int weight)
{
    font_.setWeight(static_cast<QFont::Weight>(weight));
    emit fontChanged();
    measure();
}

double DigitsView::cellWidth(QChar character) const
{
    return character.isDigit() ? digitWidth_ : QFontMetricsF(font_).horizontalAdvance(character);
}

void DigitsView::measure()
{
    const QFontMetricsF metrics(font_);
    digitWidth_ = 0;
    for (const QChar digit : QStringLiteral("0123456789"))
        digitWidth_ = std::max(digitWidth_, metrics.horizontalAdvance(digit));
    double width = 0;
    for (const QChar character : text_)
        width += cellWidth(character);
    setImplicitSize(std::ceil(width), std::ceil(metrics.height()));
    redraw();
}

void DigitsView::draw(QPainter &painter)
{
    const QFontMetricsF metrics(font_);
    painter.setFont(font_);
    painter.setPen(color_);
    double x = 0;
    for (const QChar character : text_) {
        const double cell = cellWidth(character);
        painter.drawText(QPointF(x + (cell - metrics.horizontalAdvance(character)) / 2, metrics.ascent()),
                         QString(character));
        x += cell;
    }
}

} // namespace skyflare
