#include "watch/ContactSheet.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skyflare {
namespace {

constexpr std::size_t cellPixelsAtMost = 12'000'000; // of all cells together: 36 MB
constexpr std::array<std::uint8_t, 3> ground{14, 16, 24};
constexpr int gap = 12; // pixels between the cells and around them

/// Rows of cells, as many in a row as make the sheet about as wide as it is high, in cells.
int columnsFor(std::size_t cells)
{
    return static_cast<int>(std::ceil(std::sqrt(static_cast<double>(cells))));
}

void place(const PixelBuffer &cell, PixelBuffer &sheet, int left, int top)
{
    const auto rowBytes = static_cast<std::ptrdiff_t>(cell.width) * 3;
    for (int y = 0; y < cell.height; ++y) {
        const auto target = (static_cast<std::ptrdiff_t>(top + y) * sheet.width + left) * 3;
        std::copy_n(cell.rgb.begin() + y * rowBytes, rowBytes, sheet.rgb.begin() + target);
    }
}

} // namespace

Result<> ContactSheet::add(const Image &photo)
{
    auto cell = photo.thumbnail(cellWidth_, cellHeight_);
    if (!cell)
        return cell.error();
    cells_.push_back(std::move(*cell));
    const auto cellPixels = static_cast<std::size_t>(cellWidth_) * static_cast<std::size_t>(cellHeight_);
    if (cells_.size() * cellPixels > cellPixelsAtMost && cellWidth_ > 30)
        shrinkCells();
    return {};
}

void ContactSheet::shrinkCells()
{
    cellWidth_ = cellWidth_ * 2 / 3;
    cellHeight_ = cellHeight_ * 2 / 3;
    for (PixelBuffer &cell : cells_) {
        const double scale = std::min({1.0, static_cast<double>(cellWidth_) / cell.width,
                                       static_cast<double>(cellHeight_) / cell.height});
        cell = reduced(cell, std::max(1, static_cast<int>(cell.width * scale)),
                       std::max(1, static_cast<int>(cell.height * scale)));
    }
}

PixelBuffer ContactSheet::draw() const
{
    const int columns = columnsFor(cells_.size());
    const int rows = (static_cast<int>(cells_.size()) + columns - 1) / columns;
    const int width = std::ranges::max(cells_, {}, &PixelBuffer::width).width;
    const int height = std::ranges::max(cells_, {}, &PixelBuffer::height).height;

    PixelBuffer sheet{
        .width = gap + columns * (width + gap), .height = gap + rows * (height + gap), .rgb = {}};
    sheet.rgb.resize(static_cast<std::size_t>(sheet.width) * static_cast<std::size_t>(sheet.height) * 3);
    for (std::size_t i = 0; i < sheet.rgb.size(); ++i)
        sheet.rgb[i] = ground[i % 3];
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        const PixelBuffer &cell = cells_[i];
        const int column = static_cast<int>(i) % columns;
        const int row = static_cast<int>(i) / columns;
        place(cell, sheet, gap + column * (width + gap) + (width - cell.width) / 2,
              gap + row * (height + gap) + (height - cell.height) / 2);
    }
    return sheet;
}

} // namespace skyflare
