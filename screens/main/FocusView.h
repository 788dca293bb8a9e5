#pragma once

#include <QObject>
#include <QPointF>
#include <QQmlEngine>

namespace skyflare {

/// The ring where the user has tapped to focus. It comes, grows, waits and goes; its view animates that.
///
/// Threads: main. Owned by its controller; a tap makes a new one.
class FocusView final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(QPointF center MEMBER center_ CONSTANT) ///< in the camera container
    Q_PROPERTY(double diameter MEMBER diameter_ CONSTANT)
    Q_PROPERTY(double borderWidth MEMBER borderWidth_ CONSTANT)
    Q_PROPERTY(double grownScale MEMBER grownScale_ CONSTANT)
    Q_PROPERTY(int appearMs MEMBER appearMs_ CONSTANT) ///< from alpha 0 to 1
    Q_PROPERTY(int growMs MEMBER growMs_ CONSTANT)
    Q_PROPERTY(int waitMs MEMBER waitMs_ CONSTANT)
    Q_PROPERTY(int fadeMs MEMBER fadeMs_ CONSTANT)

public:
    explicit FocusView(QPointF center) : center_(center) {}

    [[nodiscard]] QPointF center() const { return center_; }
    /// From the tap until it is gone.
    [[nodiscard]] int lifeMs() const { return appearMs_ + growMs_ + waitMs_ + fadeMs_; }

private:
    const QPointF center_;
    const double diameter_ = 80;
    const double borderWidth_ = 2;
    const double grownScale_ = 1.2;
    const int appearMs_ = 300;
    const int growMs_ = 300;
    const int waitMs_ = 500;
    const int fadeMs_ = 500;
};

} // namespace skyflare
