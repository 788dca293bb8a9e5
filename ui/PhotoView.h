#pragma once

#include "ui/ImageOutlet.h"
#include "ui/PictureItem.h"

#include <QPointer>
#include <memory>

namespace skyflare {

/// Shows the photo of an ImageOutlet, decoded off main at the size at which it is seen; from its small copy
/// first, where that is there and does not suffice. Until then, what was shown before stays.
///
/// Threads: main.
class PhotoView : public skyflare::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skyflare::ImageOutlet *outlet READ outlet WRITE setOutlet NOTIFY outletChanged)
    Q_PROPERTY(FillMode fillMode READ fillMode WRITE setFillMode NOTIFY fillModeChanged)

public:
    enum FillMode { AspectFill, AspectFit };
    Q_ENUM(FillMode)

    explicit PhotoView(QQuickItem *parent = nullptr);
    ~PhotoView() override;

    [[nodiscard]] ImageOutlet *outlet() const { return outlet_; }
    void setOutlet(ImageOutlet *outlet);
    [[nodiscard]] FillMode fillMode() const { return fillMode_; }
    void setFillMode(FillMode fillMode);

signals:
    void outletChanged();
    void fillModeChanged();
    void pictureChanged(); ///< the photo that was asked for is there, or a coarser picture of it

protected:
    void updatePolish() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    struct Request;
    [[nodiscard]] QSize neededSize() const;
    void decode();
    void giveUp();

    QPointer<ImageOutlet> outlet_;
    FillMode fillMode_ = AspectFill;
    std::shared_ptr<Request> request_; ///< on its way, or the newest one that came
};

} // namespace skyflare
