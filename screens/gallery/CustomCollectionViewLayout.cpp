#include "screens/gallery/CustomCollectionViewLayout.h"

#include <algorithm>

namespace skyflare {

namespace {

constexpr double rounding = 1e-6; // three thirds of a width may come out as more than that width

} // namespace

void CustomCollectionViewLayout::prepareLayout(double width, const std::vector<QSizeF> &itemSizes)
{
    frames_.clear();
    contentHeight_ = 0;
    double runningX = 0;
    double rowTop = 0;
    for (const QSizeF &size : itemSizes) {
        const bool isFirstOfRow = runningX == 0;
        if (!isFirstOfRow && runningX + size.width() > width + rounding) {
            runningX = 0;
            rowTop = contentHeight_ + minimumLineSpacing;
        }
        frames_.emplace_back(QPointF(runningX, rowTop), size);
        runningX += size.width() + minimumInteritemSpacing;
        contentHeight_ = std::max(contentHeight_, rowTop + size.height());
    }
}

} // namespace skyflare
