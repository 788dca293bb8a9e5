#include "ui/LightCurve.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace skyflare {

namespace {

// Few, so that the scale rests while the light plays.
constexpr std::array<double, 6> spans{0.02, 0.05, 0.1, 0.25, 0.5, 1.2};
constexpr double stepsOfSpan = 8;   // the lower edge moves in these
constexpr double usedOfSpan = 0.95; // a little air above

} // namespace

void LightCurve::append(Sample sample)
{
    if (!samples_.empty() && sample.uptimeSeconds < samples_.back().uptimeSeconds)
        samples_.clear();
    samples_.push_back(sample);
    // One older than the span stays, for the line comes from there.
    while (samples_.size() > 1 && samples_[1].uptimeSeconds <= sample.uptimeSeconds - spanSeconds)
        samples_.pop_front();
    emit changed();
}

void LightCurve::clear()
{
    samples_.clear();
    emit changed();
}

void LightCurve::setRise(double rise)
{
    if (rise_ == rise)
        return;
    rise_ = rise;
    emit changed();
}

LightCurve::Range LightCurve::range() const
{
    if (samples_.empty())
        return {0, std::max(spans.front(), rise_ * 2)};
    const auto [least, most] = std::ranges::minmax_element(samples_, {}, &Sample::brightness);
    const double low = least->brightness;
    const double high = std::max(most->brightness, samples_.back().brightness + rise_);
    for (const double span : spans) {
        const double step = span / stepsOfSpan;
        const double bottom = std::floor(low / step) * step;
        if (high - bottom <= span * usedOfSpan)
            return {bottom, bottom + span};
    }
    return {0, 2};
}

} // namespace skyflare
