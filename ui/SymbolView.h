#pragma once

#include "ui/DrawnItem.h"

#include <QColor>

namespace skyflare {

/// A symbol of ui/symbols/ in one colour, crisp at any size.
///
/// In the files white is ink, black is a gap that is cut out of it. Threads: main.
class SymbolView : public skyflare::DrawnItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER name_ WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color MEMBER color_ WRITE setColor NOTIFY colorChanged)

public:
    explicit SymbolView(QQuickItem *parent = nullptr);

    void setName(const QString &name);
    void setColor(const QColor &color);

signals:
    void nameChanged();
    void colorChanged();

protected:
    void draw(QPainter &painter) override;

private:
    QString name_; ///< empty: nothing is drawn
    QColor color_ = Qt::white;
};

} // namespace skyflare
