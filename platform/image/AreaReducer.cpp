#include "platform/image/AreaReducer.h"

#include <algorithm>

namespace skyflare {

// A picture W pixels wide is laid over a result w pixels wide by cutting each of its pixels into w parts and
// each pixel of the result into W: then all parts are of one size, and all sums are whole numbers. A pixel of
// the result sums up to 255 × W × H, far below 2^64.

AreaReducer::AreaReducer(int width, int height, int reducedWidth, int reducedHeight)
    : width_(static_cast<std::uint64_t>(width)),
      height_(static_cast<std::uint64_t>(height)),
      result_(PixelBuffer::ofSize(std::clamp(reducedWidth, 1, width), std::clamp(reducedHeight, 1, height))),
      row_(result_.rowBytes()),
      sum_(result_.rowBytes())
{
}

void AreaReducer::addRow(std::span<const std::uint8_t> rgb)
{
    reduceRow(rgb);
    std::uint64_t left = static_cast<std::uint64_t>(result_.height);
    while (left > 0 && nextRow_ < result_.height) {
        const std::uint64_t weight = std::min(left, height_ - rowFilled_);
        addWeighted(weight);
        left -= weight;
        rowFilled_ += weight;
        if (rowFilled_ == height_)
            finishRow();
    }
}

void AreaReducer::reduceRow(std::span<const std::uint8_t> rgb)
{
    const auto parts = static_cast<std::uint64_t>(result_.width); // of a pixel of the picture
    std::size_t x = 0;                                            // the pixel of the picture
    std::uint64_t left = parts;                                   // its parts that are not summed yet
    for (std::size_t i = 0; i < row_.size(); i += 3) {
        std::uint64_t wanted = width_;
        std::uint64_t red = 0;
        std::uint64_t green = 0;
        std::uint64_t blue = 0;
        while (wanted > 0) {
            const std::uint64_t weight = std::min(left, wanted);
            red += weight * rgb[3 * x];
            green += weight * rgb[3 * x + 1];
            blue += weight * rgb[3 * x + 2];
            wanted -= weight;
            left -= weight;
            if (left == 0) {
                left = parts;
                ++x;
            }
        }
        row_[i] = red;
        row_[i + 1] = green;
        row_[i + 2] = blue;
    }
}

void AreaReducer::addWeighted(std::uint64_t weight)
{
    for (std::size_t i = 0; i < row_.size(); ++i)
        sum_[i] += weight * row_[i];
}

void AreaReducer::finishRow()
{
    const std::uint64_t area = width_ * height_;
    const auto row = result_.row(nextRow_);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = static_cast<std::uint8_t>((sum_[i] + area / 2) / area);
    std::fill(sum_.begin(), sum_.end(), std::uint64_t{0});
    rowFilled_ = 0;
    ++nextRow_;
}

PixelBuffer reduced(const PixelBuffer &pixels, int width, int height)
{
    if (pixels.width < 1 || pixels.height < 1)
        return {};
    AreaReducer reducer(pixels.width, pixels.height, width, height);
    for (int y = 0; y < pixels.height; ++y)
        reducer.addRow(pixels.row(y));
    return reducer.take();
}

} // namespace skyflare
