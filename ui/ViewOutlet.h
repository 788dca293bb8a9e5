#pragma once

#include <QObject>
#include <QQmlEngine>

namespace skyflare {

/// A view as its controller sees it: hidden or not, and how opaque.
///
/// Threads: main. A part of its controller, which owns it.
class ViewOutlet : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(bool hidden READ isHidden NOTIFY hiddenChanged)
    Q_PROPERTY(double alpha READ alpha NOTIFY alphaChanged)

public:
    [[nodiscard]] bool isHidden() const { return isHidden_; }
    void setHidden(bool isHidden);
    [[nodiscard]] double alpha() const { return alpha_; }
    void setAlpha(double alpha); ///< 0 to 1

signals:
    void hiddenChanged();
    void alphaChanged();

private:
    bool isHidden_ = false;
    double alpha_ = 1;
};

} // namespace skyflare
