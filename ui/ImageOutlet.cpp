#include "ui/ImageOutlet.h"

namespace skyflare {

void ImageOutlet::setImage(std::optional<Image> image)
{
    image_ = std::move(image);
    emit imageChanged();
}

void ImageOutlet::setSymbol(std::string_view name)
{
    symbol_ = QString::fromUtf8(name);
    emit symbolChanged();
}

} // namespace skyflare
