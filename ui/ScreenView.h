#pragma once

#include "ui/ViewController.h"

#include <QQuickItem>

namespace skyflare {

/// The view of one controller: makes what its QML file says, once, and tells the controller its bounds.
///
/// A file that does not load is a programming error and ends the program. Threads: main. The controller must
/// outlive it.
class ScreenView : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skyflare::ViewController *controller MEMBER controller_ REQUIRED)

public:
    explicit ScreenView(QQuickItem *parent = nullptr);

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void layOut();

    ViewController *controller_ = nullptr;
    QQuickItem *view_ = nullptr; ///< a child of this
};

} // namespace skyflare
