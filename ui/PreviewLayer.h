#pragma once

#include "platform/camera/CaptureSession.h"
#include "ui/PreviewFeed.h"

#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QSizeF>
#include <memory>

namespace skyflare {

/// The live picture of one session, filling a view. Its controller keeps it as long as it is to be seen, and
/// a PreviewView shows it.
///
/// Threads: main. Shares nothing of the session; takes its preview's place as long as it lives.
class PreviewLayer final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")

public:
    explicit PreviewLayer(CaptureSession &session);
    ~PreviewLayer() override;
    PreviewLayer(const PreviewLayer &) = delete;
    PreviewLayer &operator=(const PreviewLayer &) = delete;

    /// Of the view, in logical pixels, and how many pixels of the screen each of those has.
    void setBounds(QSizeF size, double pixelRatio);

    // captureDevicePointOfInterestForPoint:
    /// A point of the view as a point of the sensor. The middle before there is a frame.
    [[nodiscard]] Point captureDevicePointOfInterest(QPointF point) const;

    /// The newest picture, at the size of the view; null if there is none.
    [[nodiscard]] QImage fetch() { return feed_->fetch(); }

signals:
    void pictureArrived();

private:
    const std::shared_ptr<PreviewFeed> feed_;
    QSizeF size_;
};

} // namespace skyflare
