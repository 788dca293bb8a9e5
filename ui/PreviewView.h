#pragma once

#include "ui/PictureItem.h"
#include "ui/PreviewLayer.h"

#include <QPointer>

namespace skyflare {

/// Shows a PreviewLayer; nothing where there is none.
///
/// Threads: main.
class PreviewView : public skyflare::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(skyflare::PreviewLayer *previewLayer READ previewLayer WRITE setPreviewLayer NOTIFY
                   previewLayerChanged)

public:
    explicit PreviewView(QQuickItem *parent = nullptr);

    [[nodiscard]] PreviewLayer *previewLayer() const { return layer_; }
    void setPreviewLayer(PreviewLayer *layer);

signals:
    void previewLayerChanged();

protected:
    void updatePolish() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void measure();

    QPointer<PreviewLayer> layer_;
};

} // namespace skyflare
