#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace skyflare {

/// How large a photo is shown in a room, and which part of it: fitted, or nearer. It always covers as much of
/// the room as it can.
///
/// Lengths are logical pixels but for those of the photo. Threads: one at a time; a value.
class PhotoZoom {
public:
    /// What one moves through from one view of the photo to another.
    struct Place {
        double factor = 1; ///< 1: fitted
        QPointF offset;    ///< of the photo's middle from the room's
    };

    /// @param photo  its size in pixels
    /// @param pixelRatio  physical pixels a logical one
    void setUp(QSizeF photo, const QRectF &room, double pixelRatio);

    /// Nearer by `factor`, or further where it is below 1, while what is at `point` stays there.
    void zoomBy(double factor, QPointF point);
    /// Fitted, to a pixel of the photo for each of the screen (twice the fitted size at least), and back.
    void toggle(QPointF point);
    void panBy(QPointF distance);
    void fit() { place_ = {}; }

    [[nodiscard]] const Place &place() const { return place_; }
    void setPlace(const Place &place) { place_ = place; }
    [[nodiscard]] bool isZoomed() const { return place_.factor > 1; }
    /// Where the whole photo lies; empty while there is none, or no room.
    [[nodiscard]] QRectF photoRect() const;
    [[nodiscard]] const QRectF &room() const { return room_; }

private:
    [[nodiscard]] double fittedScale() const; ///< logical pixels a pixel of the photo
    void keepInRoom();

    QSizeF photo_;
    QRectF room_;
    double pixelRatio_ = 1;
    Place place_;
};

} // namespace skyflare
