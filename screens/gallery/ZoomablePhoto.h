#pragma once

#include "screens/gallery/PhotoLoader.h"
#include "screens/gallery/PhotoZoom.h"
#include "ui/ImageOutlet.h"
#include "ui/PictureItem.h"

#include <QPointer>
#include <QVariantAnimation>

namespace skyflare {

/// Shows the whole photo of an ImageOutlet in a room of its own, and any part of it from near.
///
/// A small picture comes first, then one as sharp as it is seen; all pixels are decoded when it is looked at
/// from near, and given back when it is fitted again.
///
/// Threads: main.
class ZoomablePhoto : public skyflare::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skyflare::ImageOutlet *outlet READ outlet WRITE setOutlet NOTIFY outletChanged)
    /// The part of the item that the fitted photo may take, and that a near one covers.
    Q_PROPERTY(QRectF room READ room WRITE setRoom NOTIFY roomChanged)
    Q_PROPERTY(bool isZoomed READ isZoomed NOTIFY zoomChanged)
    Q_PROPERTY(bool isDamaged READ isDamaged NOTIFY isDamagedChanged)

public:
    explicit ZoomablePhoto(QQuickItem *parent = nullptr);

    [[nodiscard]] ImageOutlet *outlet() const { return outlet_; }
    void setOutlet(ImageOutlet *outlet);
    [[nodiscard]] const QRectF &room() const { return room_; }
    void setRoom(const QRectF &room);
    [[nodiscard]] bool isZoomed() const { return zoom_.isZoomed(); }
    [[nodiscard]] bool isDamaged() const { return isDamaged_; } ///< it cannot be decoded
    [[nodiscard]] QRectF photoRect() const { return zoom_.photoRect(); }

    // By keys and double tap: the photo moves there.
    Q_INVOKABLE void toggle(QPointF point);
    Q_INVOKABLE void zoomBy(double factor);
    Q_INVOKABLE void fit();
    /// By this part of the room; 1 is a whole one.
    Q_INVOKABLE void panByRooms(double x, double y);

    // By hand: the photo is where the hand is.
    Q_INVOKABLE void wheel(double eighthsOfDegree, QPointF point);
    Q_INVOKABLE void beginGesture(QPointF point);
    /// @param scale, point  since, and of, the beginning of the gesture
    Q_INVOKABLE void gestureTo(double scale, QPointF point);

signals:
    void outletChanged();
    void roomChanged();
    void zoomChanged();
    void isDamagedChanged();

protected:
    void updatePolish() override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    void renew();
    void measure();
    void zoomed();
    [[nodiscard]] PhotoZoom target() const;
    void glideTo(const PhotoZoom &wanted);
    void loadFitted();
    void loadWhole();
    void showPicture();
    void setDamaged(bool isDamaged);

    QPointer<ImageOutlet> outlet_;
    QRectF room_;
    PhotoZoom zoom_;
    PhotoZoom::Place glideFrom_;
    PhotoZoom::Place glideTo_;
    QVariantAnimation glide_; ///< from 0 to 1
    PhotoZoom gestureStart_;
    QPointF gesturePoint_;
    PhotoLoader firstLoader_; ///< of a small picture
    PhotoLoader fittedLoader_;
    PhotoLoader wholeLoader_;
    QSize fittedBox_;      ///< what was last asked for; empty: nothing
    bool isWhole_ = false; ///< all pixels have been asked for
    QImage fitted_;        ///< sharp while it is fitted; or the small picture, until then
    QImage whole_;         ///< null but while it is zoomed
    bool isDamaged_ = false;
};

} // namespace skyflare
