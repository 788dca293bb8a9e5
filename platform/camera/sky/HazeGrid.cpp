#include "platform/camera/sky/HazeGrid.h"

#include "platform/camera/sky/Bt709.h"

#include <algorithm>
#include <cmath>

namespace skyflare {

namespace {

/// About 70 cells from top to bottom, a power of two each.
int cellFor(int height)
{
    int cell = 4;
    while (cell < 32 && cell * 90 < height)
        cell *= 2;
    return cell;
}

/// Bright air takes on ever less: it glows, it does not burn out.
float softLimit(float value)
{
    constexpr float knee = 0.34F;
    constexpr float room = 0.40F;
    if (value <= knee)
        return value;
    const float over = (value - knee) / room;
    return knee + room * over / (1.0F + over);
}

/// One [1 4 6 4 1] pass along lines of `count` values that are `step` apart.
void blurLine(float *line, int count, int step)
{
    const auto at = [&](int i) { return line[std::clamp(i, 0, count - 1) * step]; };
    float second = at(0);
    float first = at(0);
    for (int i = 0; i < count; ++i) {
        const float here = line[i * step];
        line[i * step] = (second + 4.0F * first + 6.0F * here + 4.0F * at(i + 1) + at(i + 2)) * 0.0625F;
        second = first;
        first = here;
    }
}

/// Straight lines from node to node. The cell is known when this is compiled, so that eight pixels are done
/// at once.
template <int cell> void spread(const std::vector<std::int16_t> &nodes, std::int16_t *out)
{
    std::int16_t weights[cell];
    for (int k = 0; k < cell; ++k)
        weights[k] = static_cast<std::int16_t>(k * 32768 / cell);
    const std::int16_t *node = nodes.data();
    const std::int16_t *const last = node + nodes.size() - 1;
    for (; node != last; ++node, out += cell) {
        const std::int16_t base = node[0];
        // Fits 16 bits: neighbours differ by 219 · 64 at most.
        const auto slope = static_cast<std::int16_t>((node[1] - base) * 2);
        for (int k = 0; k < cell; ++k)
            out[k] = static_cast<std::int16_t>(base + ((slope * weights[k]) >> 16));
    }
}

} // namespace

HazeGrid::HazeGrid(const SceneLayout &layout, std::uint64_t seed)
    : layout_(layout),
      cell_(cellFor(layout.height)),
      columns_((layout.width + cell_ - 1) / cell_ + 1),
      rows_((layout.shore + cell_ - 1) / cell_ + 1),
      field_(seed)
{
    const auto nodes = static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_);
    for (int channel = 0; channel < channelCount; ++channel) {
        light_[channel].resize(nodes);
        halo_[channel].resize(nodes);
    }
    puffs_.resize(nodes);
    kernel_.resize(nodes);
    between_.resize(static_cast<std::size_t>(columns_));
    for (Plane *plane : {&luma_, &cb_, &cr_}) {
        plane->nodes.resize(nodes);
        plane->row.resize(static_cast<std::size_t>(columns_ * cell_));
    }
}

void HazeGrid::clear()
{
    for (int channel = 0; channel < channelCount; ++channel) {
        std::fill(light_[channel].begin(), light_[channel].end(), 0.0F);
        std::fill(halo_[channel].begin(), halo_[channel].end(), 0.0F);
    }
    std::fill(puffs_.begin(), puffs_.end(), 0.0F);
}

void HazeGrid::addLight(const HazeLight &light)
{
    const float scale = static_cast<float>(cell_) / light.radius;
    const float centerX = light.x / static_cast<float>(cell_);
    const float centerY = light.y / static_cast<float>(cell_);
    double sum = 0;
    for (int j = 0; j < rows_; ++j) {
        const float dy = (static_cast<float>(j) - centerY) * scale;
        float *line = kernel_.data() + static_cast<std::ptrdiff_t>(j) * columns_;
        for (int i = 0; i < columns_; ++i) {
            const float dx = (static_cast<float>(i) - centerX) * scale;
            const float near = 1.0F / (1.0F + dx * dx + dy * dy);
            line[i] = light.everywhere + (1.0F - light.everywhere) * near * (0.45F + 0.55F * near * near);
        }
        for (int i = 0; i < columns_; ++i)
            sum += static_cast<double>(line[i]);
    }
    // The water gives about a third of it back; the houses hardly any.
    const double sky = static_cast<double>(layout_.shore) / layout_.height;
    const double mean = sum / static_cast<double>(kernel_.size()) * (0.95 * sky + 0.35 * (1.0 - sky));
    const float strength = light.meanRed / static_cast<float>(mean) / light.color.red;
    const float factors[] = {light.color.red * strength, light.color.green * strength,
                             light.color.blue * strength};
    for (int channel = 0; channel < channelCount; ++channel) {
        float *into = light_[channel].data();
        for (std::size_t i = 0; i < kernel_.size(); ++i)
            into[i] += kernel_[i] * factors[channel];
    }
}

void HazeGrid::addPuff(const SmokePuff &puff)
{
    const float scale = static_cast<float>(cell_) / puff.radius;
    for (int j = 0; j < rows_; ++j) {
        const float dy = (static_cast<float>(j) - puff.y / static_cast<float>(cell_)) * scale;
        for (int i = 0; i < columns_; ++i) {
            const float dx = (static_cast<float>(i) - puff.x / static_cast<float>(cell_)) * scale;
            const float near = 1.0F / (1.0F + dx * dx + dy * dy);
            puffs_[static_cast<std::size_t>(j * columns_ + i)] += puff.density * near * near;
        }
    }
}

void HazeGrid::addHalo(float x, float y, LightColor light)
{
    const float column = x / static_cast<float>(cell_);
    const float row = y / static_cast<float>(cell_);
    if (column < 0 || row < 0 || column >= static_cast<float>(columns_ - 1) ||
        row >= static_cast<float>(rows_ - 1))
        return;
    const int left = static_cast<int>(column);
    const int top = static_cast<int>(row);
    const float fx = column - static_cast<float>(left);
    const float fy = row - static_cast<float>(top);
    const auto add = [&](int i, int j, float share) {
        const auto place = static_cast<std::size_t>(j * columns_ + i);
        halo_[Red][place] += light.red * share;
        halo_[Green][place] += light.green * share;
        halo_[Blue][place] += light.blue * share;
    };
    add(left, top, (1 - fx) * (1 - fy));
    add(left + 1, top, fx * (1 - fy));
    add(left, top + 1, (1 - fx) * fy);
    add(left + 1, top + 1, fx * fy);
}

void HazeGrid::blurHalos()
{
    for (std::vector<float> &plane : halo_) {
        for (int pass = 0; pass < 2; ++pass) {
            for (int j = 0; j < rows_; ++j)
                blurLine(plane.data() + static_cast<std::ptrdiff_t>(j) * columns_, columns_, 1);
            for (int i = 0; i < columns_; ++i)
                blurLine(plane.data() + i, rows_, columns_);
        }
    }
}

void HazeGrid::finish(double seconds)
{
    blurHalos();
    const auto pixels = static_cast<float>(cell_);
    const float perCell = 1.0F / (pixels * pixels);
    const auto drift = static_cast<float>(std::fmod(seconds * 0.011, 1.0));
    const auto churn = static_cast<float>(std::fmod(seconds * 0.017, 1.0));
    const float across = pixels / (layout_.unit * 1.5F);
    const float down = pixels / (layout_.unit * 0.9F);
    for (int j = 0; j < rows_; ++j) {
        for (int i = 0; i < columns_; ++i) {
            const auto place = static_cast<std::size_t>(j * columns_ + i);
            const float x = static_cast<float>(i) * across;
            const float y = static_cast<float>(j) * down;
            const float thick =
                0.6F * field_.at(x - drift, y) + 0.4F * field_.at(2.3F * x - churn, 2.3F * y + drift);
            const float fine = 0.52F + 0.96F * thick;
            const float smoke = fine * (0.92F + 0.8F * puffs_[place]);
            const auto channel = [&](Channel which) {
                return softLimit(light_[which][place] * smoke) + softLimit(halo_[which][place] * perCell);
            };
            const YCbCr64 node = bt709({channel(Red), channel(Green), channel(Blue)});
            luma_.nodes[place] = node.luma;
            cb_.nodes[place] = node.cb;
            cr_.nodes[place] = node.cr;
        }
    }
}

const std::int16_t *HazeGrid::expand(Plane &plane, int row, int cell)
{
    const int j = std::min(row / cell, rows_ - 2);
    const int weightY = std::min((row - j * cell) * 32768 / cell, 32767);
    const std::int16_t *upper = plane.nodes.data() + static_cast<std::ptrdiff_t>(j) * columns_;
    const std::int16_t *lower = upper + columns_;
    for (int i = 0; i < columns_; ++i)
        between_[static_cast<std::size_t>(i)] =
            static_cast<std::int16_t>(upper[i] + ((lower[i] - upper[i]) * weightY >> 15));

    std::int16_t *out = plane.row.data();
    switch (cell) {
    case 2:
        spread<2>(between_, out);
        break;
    case 4:
        spread<4>(between_, out);
        break;
    case 8:
        spread<8>(between_, out);
        break;
    case 16:
        spread<16>(between_, out);
        break;
    default:
        spread<32>(between_, out);
    }
    return out;
}

const std::int16_t *HazeGrid::lumaRow(int row)
{
    return expand(luma_, row, cell_);
}

const std::int16_t *HazeGrid::cbRow(int row)
{
    return expand(cb_, row, cell_ / 2);
}

const std::int16_t *HazeGrid::crRow(int row)
{
    return expand(cr_, row, cell_ / 2);
}

} // namespace skyflare
