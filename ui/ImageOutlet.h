#pragma once

#include "platform/image/Image.h"
#include "ui/ViewOutlet.h"

#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// An image view as its controller sees it: a photo, or a symbol of ours.
///
/// Threads: main. Owned by its controller. Decodes nothing: whoever shows it does, off main.
class ImageOutlet : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(bool hasImage READ hasImage NOTIFY imageChanged)
    Q_PROPERTY(QString symbol READ shownSymbol NOTIFY symbolChanged)

public:
    [[nodiscard]] const std::optional<Image> &image() const { return image_; }
    void setImage(std::optional<Image> image);
    [[nodiscard]] bool hasImage() const { return image_.has_value(); }
    /// The name of a file in ui/symbols/, without its ending; empty for none.
    [[nodiscard]] std::string symbol() const { return symbol_.toStdString(); }
    void setSymbol(std::string_view name);
    [[nodiscard]] QString shownSymbol() const { return symbol_; }

signals:
    void imageChanged();
    void symbolChanged();

private:
    std::optional<Image> image_;
    QString symbol_;
};

} // namespace skyflare
