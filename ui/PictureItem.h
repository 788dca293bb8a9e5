#pragma once

#include <QImage>
#include <QQuickItem>

namespace skyflare {

/// A QQuickItem that shows one picture, also on the software backend.
///
/// Threads: main; the scene graph's own thread reads while main waits.
class PictureItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit PictureItem(QQuickItem *parent = nullptr);

    [[nodiscard]] const QImage &picture() const { return picture_; }

protected:
    enum class Placement { Fill, Fit, TopLeft }; ///< TopLeft: pixel for pixel
    void setPlacement(Placement placement);
    void setPicture(QImage picture);
    [[nodiscard]] double pixelRatio() const;

    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;
    /// Just before the picture is handed to the scene graph; main waits.
    virtual void pictureWillBeShown() {}

private:
    QImage picture_;
    Placement placement_ = Placement::Fill;
    bool isNew_ = false;
};

} // namespace skyflare
