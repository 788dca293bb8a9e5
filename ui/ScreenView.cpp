#include "ui/ScreenView.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>

namespace skyflare {

ScreenView::ScreenView(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemIsFocusScope); // remembers its focus while a popup has it
}

void ScreenView::componentComplete()
{
    QQuickItem::componentComplete();
    QQmlComponent component(qmlEngine(this), controller_->viewUrl());
    // Qt 6.4 crashes where it is to make something of a file that does not load.
    if (component.isReady())
        view_ = qobject_cast<QQuickItem *>(component.createWithInitialProperties(
            {{QStringLiteral("controller"), QVariant::fromValue(controller_)}}, qmlContext(this)));
    if (view_ == nullptr)
        qFatal("The view %s of %s does not load: %s", qUtf8Printable(controller_->viewUrl().toString()),
               controller_->metaObject()->className(), qUtf8Printable(component.errorString()));
    view_->setParent(this);
    view_->setParentItem(this);
    layOut();
}

void ScreenView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    layOut();
}

void ScreenView::layOut()
{
    if (view_ == nullptr)
        return;
    view_->setSize(size());
    controller_->setBounds(QRectF(QPointF(), size()));
}

} // namespace skyflare
