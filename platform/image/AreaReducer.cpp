#include "platform/image/AreaReducer.h"

#include <algorithm>
#include <array>

namespace skyflare {

// A picture W pixels wide is laid over a result w pixels wide by cutting each of its pixels into w parts and
// each pixel of the result into W: then all parts are of one size, and all sums are whole numbers. A pixel of
// the result sums up to 255 × W × H, far below 2^64.
//
// Rows are summed first, for that is the larger part of the work and the same for each byte: the ones that
// lie whole in a row of the result in 16 bits, and weighed all at once.

AreaReducer::AreaReducer(int width, int height, int reducedWidth, int reducedHeight)
    : width_(static_cast<std::uint64_t>(width)),
      height_(static_cast<std::uint64_t>(height)),
      result_(PixelBuffer::ofSize(std::clamp(reducedWidth, 1, width), std::clamp(reducedHeight, 1, height))),
      whole_(static_cast<std::size_t>(width) * 3),
      sum_(whole_.size())
{
}

void AreaReducer::addRow(std::span<const std::uint8_t> rgb)
{
    const auto parts = static_cast<std::uint64_t>(result_.height); // of a row of the picture
    std::uint64_t left = parts;
    while (left > 0 && nextRow_ < result_.height) {
        const std::uint64_t weight = std::min(left, height_ - rowFilled_);
        if (weight == parts)
            addWhole(rgb);
        else
            addWeighted(rgb, static_cast<std::uint32_t>(weight));
        left -= weight;
        rowFilled_ += weight;
        if (rowFilled_ == height_)
            finishRow();
    }
}

void AreaReducer::addWhole(std::span<const std::uint8_t> rgb)
{
    constexpr int mostRows = 65535 / 255;
    if (wholeRows_ == mostRows)
        weighWhole();
    ++wholeRows_;
    std::uint16_t *sums = whole_.data();
    for (std::size_t i = 0; i < whole_.size(); ++i)
        sums[i] = static_cast<std::uint16_t>(sums[i] + rgb[i]);
}

void AreaReducer::weighWhole()
{
    const auto weight = static_cast<std::uint32_t>(result_.height);
    for (std::size_t i = 0; i < whole_.size(); ++i)
        sum_[i] += whole_[i] * weight;
    std::fill(whole_.begin(), whole_.end(), std::uint16_t{0});
    wholeRows_ = 0;
}

void AreaReducer::addWeighted(std::span<const std::uint8_t> rgb, std::uint32_t weight)
{
    std::uint32_t *sums = sum_.data();
    for (std::size_t i = 0; i < sum_.size(); ++i)
        sums[i] += rgb[i] * weight;
}

void AreaReducer::finishRow()
{
    if (wholeRows_ > 0)
        weighWhole();
    const std::uint64_t area = width_ * height_;
    const auto parts = static_cast<std::uint64_t>(result_.width); // of a column of the picture
    const auto row = result_.row(nextRow_);
    const std::uint32_t *column = sum_.data();
    std::uint64_t left = parts; // of that column; never 0
    for (std::size_t i = 0; i < row.size(); i += 3) {
        const std::uint32_t *const first = column;
        column += 3;
        std::uint64_t wanted = width_ - left;
        std::array<std::uint64_t, 3> whole{};
        for (; wanted >= parts; wanted -= parts, column += 3) {
            for (std::size_t channel = 0; channel < 3; ++channel)
                whole[channel] += column[channel];
        }
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const std::uint64_t last = wanted > 0 ? wanted * column[channel] : 0;
            const std::uint64_t sum = left * first[channel] + parts * whole[channel] + last;
            row[i + channel] = static_cast<std::uint8_t>((sum + area / 2) / area);
        }
        left = parts - wanted;
    }
    std::fill(sum_.begin(), sum_.end(), std::uint32_t{0});
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
