#include "ui/PixelImage.h"

namespace skyflare {

QImage toImage(const PixelBuffer &pixels)
{
    return QImage(pixels.rgb.data(), pixels.width, pixels.height, static_cast<qsizetype>(pixels.rowBytes()),
                  QImage::Format_RGB888)
        .convertToFormat(QImage::Format_RGB32);
}

} // namespace skyflare
