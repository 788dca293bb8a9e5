#pragma once

#include <QRectF>
#include <QSizeF>
#include <vector>

namespace skyflare {

/// How the grid lays out its cells: in each row as many as fit side by side, packed from the left edge, also
/// where the row is not full.
///
/// Threads: one at a time; a value.
class CustomCollectionViewLayout {
public:
    static constexpr double minimumLineSpacing = 2;
    static constexpr double minimumInteritemSpacing = 2;

    /// @param width  of the grid, in logical pixels
    /// @param itemSizes  of the cells, in their order
    void prepareLayout(double width, const std::vector<QSizeF> &itemSizes);

    // layoutAttributesForElementsInRect:
    /// Where each cell lies. Deliberate: all of them, whatever part of the grid is seen; they are few.
    [[nodiscard]] const std::vector<QRectF> &layoutAttributesForElements() const { return frames_; }

    [[nodiscard]] double contentHeight() const { return contentHeight_; }

private:
    std::vector<QRectF> frames_;
    double contentHeight_ = 0;
};

} // namespace skyflare
