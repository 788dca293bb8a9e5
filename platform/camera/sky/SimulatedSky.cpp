#include "platform/camera/sky/SimulatedSky.h"

#include "platform/base/Bytes.h"

#include <algorithm>

namespace skyflare {

namespace {

/// out = scene + air + grain, from sixty-fourths to whole steps, within `low` and `high`. One plain loop over
/// 16-bit numbers, so that the compiler takes eight at once.
struct RowLimits {
    std::int16_t low;
    std::int16_t high;
};
constexpr RowLimits lumaLimits{16 * 64, 235 * 64};
constexpr RowLimits chromaLimits{16 * 64, 240 * 64};

void layRow(std::uint8_t *out, const std::int16_t *scene, const std::int16_t *air, const std::int16_t *grain,
            int width, RowLimits limits)
{
    for (int x = 0; x < width; ++x) {
        const auto sum = static_cast<std::int16_t>(scene[x] + air[x] + grain[x]);
        const std::int16_t inside = std::min(std::max(sum, limits.low), limits.high);
        out[x] = static_cast<std::uint8_t>(inside >> 6);
    }
}

/// The same where the shore hides part of the air.
void layCoveredRow(std::uint8_t *out, const std::int16_t *scene, const std::int16_t *air,
                   const std::int16_t *grain, int width, RowLimits limits, const std::int16_t *openness)
{
    for (int x = 0; x < width; ++x) {
        const auto seen = static_cast<std::int16_t>((air[x] * openness[x]) >> 15);
        const auto sum = static_cast<std::int16_t>(scene[x] + seen + grain[x]);
        const std::int16_t inside = std::min(std::max(sum, limits.low), limits.high);
        out[x] = static_cast<std::uint8_t>(inside >> 6);
    }
}

void lay(std::uint8_t *out, const std::int16_t *scene, const std::int16_t *air, const std::int16_t *grain,
         int width, RowLimits limits, const std::int16_t *openness)
{
    if (openness)
        layCoveredRow(out, scene, air, grain, width, limits, openness);
    else
        layRow(out, scene, air, grain, width, limits);
}

} // namespace

SimulatedSky::SimulatedSky(const SkyParameters &parameters)
    : parameters_(parameters),
      layout_(parameters.width, parameters.height),
      schedule_(parameters.framesPerSecond, parameters.seed),
      scene_(layout_, parameters.seed),
      noise_(parameters.width, parameters.seed),
      slowGlow_(parameters.seed),
      water_(layout_, parameters.seed),
      haze_(layout_, parameters.seed),
      light_(layout_, scene_.skyline())
{
}

void SimulatedSky::drawShells(std::int64_t number, double seconds)
{
    const std::vector<ShellPlan> plans = schedule_.plansAt(number);
    std::vector<Shell> shown;
    shown.reserve(plans.size());
    for (const ShellPlan &plan : plans) {
        const auto known = std::find_if(shells_.begin(), shells_.end(),
                                        [&](const Shell &shell) { return shell.id() == plan.id; });
        shown.push_back(known != shells_.end() ? *known : Shell(plan, layout_));
        shown.back().draw(seconds, light_, haze_);
    }
    shells_.swap(shown);
}

void SimulatedSky::drawAir(std::int64_t number, const I420View &into)
{
    for (int y = 0; y < layout_.shore; ++y)
        lay(into.luma + y * into.lumaStride, scene_.lumaRow(y), haze_.lumaRow(y), noise_.lumaRow(number, y),
            into.width, lumaLimits, scene_.openness(y));
    for (int y = 0; y < layout_.shore / 2; ++y) {
        const std::ptrdiff_t offset = y * into.chromaStride;
        const std::int16_t *openness = scene_.chromaOpenness(y);
        lay(into.cb + offset, scene_.cbRow(y), haze_.cbRow(y), noise_.cbRow(number, y), into.chromaWidth(),
            chromaLimits, openness);
        lay(into.cr + offset, scene_.crRow(y), haze_.crRow(y), noise_.crRow(number, y), into.chromaWidth(),
            chromaLimits, openness);
    }
}

void SimulatedSky::render(std::int64_t number, const I420View &into)
{
    const double seconds = static_cast<double>(number) / parameters_.framesPerSecond;
    haze_.clear();
    drawShells(number, seconds);
    const HazeLight glow = slowGlow_.lightAt(seconds, layout_);
    if (glow.meanRed > 0)
        haze_.addLight(glow);
    haze_.finish(seconds);
    drawAir(number, into);
    light_.developOnto(into);
    water_.draw(into, scene_, noise_, number, seconds);
}

VideoFrame SimulatedSky::frame(std::int64_t number)
{
    I420View view{.width = parameters_.width, .height = parameters_.height};
    view.lumaStride = view.width;
    view.chromaStride = view.chromaWidth();
    const auto lumaSize = static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
    const auto chromaSize =
        static_cast<std::size_t>(view.chromaWidth()) * static_cast<std::size_t>(view.chromaHeight());
    const auto bytes = std::make_shared<Bytes>(lumaSize + 2 * chromaSize);
    view.luma = bytes->data();
    view.cb = view.luma + lumaSize;
    view.cr = view.cb + chromaSize;
    render(number, view);

    VideoFrame frame;
    frame.format = PixelFormat::I420;
    frame.width = view.width;
    frame.height = view.height;
    frame.planes = {
        {{view.luma, view.lumaStride}, {view.cb, view.chromaStride}, {view.cr, view.chromaStride}}};
    const std::chrono::duration<double> time(static_cast<double>(number) / parameters_.framesPerSecond);
    frame.streamTime = std::chrono::round<std::chrono::nanoseconds>(time);
    frame.owner = bytes;
    return frame;
}

std::vector<std::int64_t> SimulatedSky::burstFrames(double seconds) const
{
    std::vector<std::int64_t> frames;
    for (std::int64_t index = 0;; ++index) {
        const std::int64_t frame = schedule_.burstFrame(index);
        if (static_cast<double>(frame) >= seconds * parameters_.framesPerSecond)
            return frames;
        frames.push_back(frame);
    }
}

std::vector<double> SimulatedSky::burstTimes(double seconds) const
{
    std::vector<double> times;
    for (const std::int64_t frame : burstFrames(seconds))
        times.push_back(static_cast<double>(frame) / parameters_.framesPerSecond);
    return times;
}

} // namespace skyflare
