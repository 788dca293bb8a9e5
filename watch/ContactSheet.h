#pragma once

#include "platform/base/Result.h"
#include "platform/image/Image.h"

#include <cstddef>
#include <vector>

namespace skyflare {

/// All photos of a run, small, on one picture.
///
/// The cells shrink as photos come, so that neither the memory nor the sheet grows past some megabytes.
/// Threads: one at a time.
class ContactSheet {
public:
    /// Adds a photo as the last one. An error leaves the sheet as it was.
    Result<> add(const Image &photo);

    [[nodiscard]] std::size_t size() const { return cells_.size(); }

    /// The sheet: dark ground, photos in rows in the order in which they came. At least one photo.
    [[nodiscard]] PixelBuffer draw() const;

private:
    std::vector<PixelBuffer> cells_;
    int cellWidth_ = 480;  ///< pixels, as the largest photo may be
    int cellHeight_ = 360; ///< pixels

    void shrinkCells();
};

} // namespace skyflare
