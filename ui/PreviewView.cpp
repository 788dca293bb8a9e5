#include "ui/PreviewView.h"

namespace skyflare {

PreviewView::PreviewView(QQuickItem *parent) : PictureItem(parent)
{
    setPlacement(Placement::Fill);
}

void PreviewView::setPreviewLayer(PreviewLayer *layer)
{
    if (layer_ == layer && layer != nullptr) // one that is no more is null already
        return;
    if (layer_)
        disconnect(layer_, nullptr, this, nullptr);
    layer_ = layer;
    // Fetched once a frame of the screen: a hidden window fetches nothing, and so nothing is turned for it.
    if (layer_)
        connect(layer_, &PreviewLayer::pictureArrived, this, &QQuickItem::polish);
    setPicture({}); // of another session, or of none
    measure();
    emit previewLayerChanged();
}

void PreviewView::updatePolish()
{
    if (!layer_)
        return;
    if (auto picture = layer_->fetch(); !picture.isNull())
        setPicture(std::move(picture));
}

void PreviewView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    PictureItem::geometryChange(newGeometry, oldGeometry);
    measure();
}

void PreviewView::itemChange(ItemChange change, const ItemChangeData &data)
{
    PictureItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        measure();
}

void PreviewView::measure()
{
    if (layer_)
        layer_->setBounds(size(), pixelRatio());
}

} // namespace skyflare
