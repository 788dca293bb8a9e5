#pragma once

#include "ui/DrawnItem.h"

#include <QColor>
#include <QFont>

namespace skyflare {

/// A number in digits of one width, so that nothing moves while it changes. Qt 6.4 cannot ask a font for its
/// tabular digits, so each stands in a cell as wide as the widest.
///
/// Threads: main.
class DigitsView : public skyflare::DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER text_ WRITE setText NOTIFY textChanged)
    Q_PROPERTY(QColor color MEMBER color_ WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(int pixelSize READ pixelSize WRITE setPixelSize NOTIFY fontChanged)
    Q_PROPERTY(int weight READ weight WRITE setWeight NOTIFY fontChanged)

public:
    explicit DigitsView(QQuickItem *parent = nullptr);

    void setText(const QString &text);
    void setColor(const QColor &color);
    [[nodiscard]] int pixelSize() const { return font_.pixelSize(); }
    void setPixelSize(int size);
    [[nodiscard]] int weight() const { return font_.weight(); }
    void setWeight(int weight); ///< as Font.Bold in QML

signals:
    void textChanged();
    void colorChanged();
    void fontChanged();

protected:
    void draw(QPainter &painter) override;

private:
    [[nodiscard]] double cellWidth(QChar character) const;
    void measure();

    QString text_;
    QColor color_ = Qt::white;
    QFont font_;
    double digitWidth_ = 0;
};

} // namespace skyflare
