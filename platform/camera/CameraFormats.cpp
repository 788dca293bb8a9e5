#include "platform/camera/CameraFormats.h"

#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace skyflare {

namespace {

/// What is measured as it is, the least work first.
constexpr std::array<std::string_view, 8> nativeFormats{"NV12", "I420", "YUY2", "UYVY",
                                                        "RGBx", "BGRx", "RGB",  "GRAY8"};
constexpr int jpegRank = 10;
constexpr int convertedRank = 20;

constexpr double fluentRate = 14.9; // 15, or the 14.985 of NTSC
constexpr double usualRate = 30;
constexpr double longestRate = 1000;
constexpr int longestSide = 16384; ///< a range that goes beyond means "any size"
constexpr int usualWidth = 1920;
constexpr int usualHeight = 1080;

struct Rate {
    int numerator = 0; ///< 0: not known
    int denominator = 1;
    [[nodiscard]] double perSecond() const { return static_cast<double>(numerator) / denominator; }
};

struct Size {
    int width = 0;
    int height = 0;
    [[nodiscard]] double area() const { return static_cast<double>(width) * height; }
};

struct Candidate {
    guint structure = 0;
    std::string format; ///< of raw pictures
    int rank = 0;
    Size size;
    Rate rate;
};

/// Calls `use` for the value, or for each one of a list.
template <typename Use> void forEachValue(const GValue *value, const Use &use)
{
    if (!value)
        return;
    if (!GST_VALUE_HOLDS_LIST(value)) {
        use(value);
        return;
    }
    for (guint i = 0; i < gst_value_list_get_size(value); ++i)
        forEachValue(gst_value_list_get_value(value, i), use);
}

std::vector<int> sidesIn(const GstStructure *structure, const char *field, int usual)
{
    std::vector<int> sides;
    forEachValue(gst_structure_get_value(structure, field), [&](const GValue *value) {
        if (G_VALUE_HOLDS_INT(value)) {
            sides.push_back(g_value_get_int(value));
        } else if (GST_VALUE_HOLDS_INT_RANGE(value)) {
            const int least = gst_value_get_int_range_min(value);
            const int step = std::max(1, gst_value_get_int_range_step(value));
            int most = gst_value_get_int_range_max(value);
            if (most > longestSide)
                most = std::max(least, usual - usual % step);
            sides.insert(sides.end(), {least, most});
        }
    });
    return sides;
}

std::vector<Size> sizesIn(const GstStructure *structure)
{
    const auto widths = sidesIn(structure, "width", usualWidth);
    const auto heights = sidesIn(structure, "height", usualHeight);
    std::vector<Size> sizes;
    // Two lists of one length are sizes that were taken apart: not every width goes with every height.
    const bool arePairs = widths.size() == heights.size();
    for (std::size_t i = 0; i < widths.size(); ++i) {
        for (std::size_t j = 0; j < heights.size(); ++j) {
            if ((!arePairs || i == j) && widths[i] > 0 && heights[j] > 0)
                sizes.push_back({widths[i], heights[j]});
        }
    }
    return sizes;
}

Rate rateOf(const GValue *fraction)
{
    return {gst_value_get_fraction_numerator(fraction), gst_value_get_fraction_denominator(fraction)};
}

std::vector<Rate> ratesIn(const GstStructure *structure)
{
    std::vector<Rate> rates;
    forEachValue(gst_structure_get_value(structure, "framerate"), [&](const GValue *value) {
        if (GST_VALUE_HOLDS_FRACTION(value)) {
            rates.push_back(rateOf(value));
        } else if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) {
            const Rate least = rateOf(gst_value_get_fraction_range_min(value));
            const Rate most = rateOf(gst_value_get_fraction_range_max(value));
            if (most.perSecond() <= longestRate)
                rates.push_back(most);
            if (least.perSecond() < usualRate && most.perSecond() > usualRate)
                rates.push_back({static_cast<int>(usualRate), 1});
            rates.push_back(least);
        }
    });
    std::erase_if(rates, [](const Rate &rate) { return rate.numerator <= 0 || rate.denominator <= 0; });
    return rates.empty() ? std::vector<Rate>{{}} : rates;
}

std::optional<int> rankOfRaw(const std::string &format)
{
    const auto *native = std::find(nativeFormats.begin(), nativeFormats.end(), format);
    if (native != nativeFormats.end())
        return static_cast<int>(native - nativeFormats.begin());
    const GstVideoFormat known = gst_video_format_from_string(format.c_str());
    return known == GST_VIDEO_FORMAT_UNKNOWN || known == GST_VIDEO_FORMAT_ENCODED
               ? std::nullopt
               : std::optional(convertedRank);
}

/// The kinds of picture that a structure names and that can be read: formats with their ranks.
std::vector<std::pair<std::string, int>> kindsIn(const GstStructure *structure)
{
    std::vector<std::pair<std::string, int>> kinds;
    if (gst_structure_has_name(structure, "image/jpeg")) {
        kinds.emplace_back("", jpegRank);
    } else if (gst_structure_has_name(structure, "video/x-raw")) {
        forEachValue(gst_structure_get_value(structure, "format"), [&kinds](const GValue *value) {
            const char *text = G_VALUE_HOLDS_STRING(value) ? g_value_get_string(value) : nullptr;
            const std::string format = text ? text : "";
            if (const auto rank = rankOfRaw(format))
                kinds.emplace_back(format, *rank);
        });
    }
    return kinds;
}

std::vector<Candidate> candidatesIn(const GstCaps *caps)
{
    std::vector<Candidate> candidates;
    if (!caps || gst_caps_is_any(caps))
        return candidates;
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        if (!gst_caps_features_is_equal(gst_caps_get_features(caps, i),
                                        GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY))
            continue;
        const GstStructure *structure = gst_caps_get_structure(caps, i);
        const auto sizes = sizesIn(structure);
        const auto rates = ratesIn(structure);
        for (const auto &[format, rank] : kindsIn(structure)) {
            for (const Size &size : sizes) {
                for (const Rate &rate : rates)
                    candidates.push_back({i, format, rank, size, rate});
            }
        }
    }
    const auto isConverted = [](const Candidate &candidate) { return candidate.rank == convertedRank; };
    if (!std::all_of(candidates.begin(), candidates.end(), isConverted))
        std::erase_if(candidates, isConverted);
    return candidates;
}

/// Greater is better.
auto merit(const Candidate &candidate)
{
    const double rate = candidate.rate.perSecond();
    const double whole = std::round(rate); // 29.97 is as good as 30
    const double nearness = whole <= usualRate ? whole : usualRate - (whole - usualRate) / 100;
    const bool isFluent = candidate.rate.numerator == 0 || rate >= fluentRate;
    const double area = candidate.size.area();
    return std::tuple(isFluent, isFluent ? area : rate, isFluent ? nearness : area, -candidate.rank);
}

} // namespace

std::vector<CaptureFormat> formatsIn(const GstCaps *caps)
{
    std::vector<CaptureFormat> formats;
    for (const Candidate &candidate : candidatesIn(caps))
        formats.push_back({candidate.size.width, candidate.size.height, candidate.rate.perSecond()});
    const auto key = [](const CaptureFormat &format) {
        return std::tuple(-Size{format.width, format.height}.area(), -format.width, -format.framesPerSecond);
    };
    std::ranges::sort(formats, {}, key);
    const auto isSame = [&key](const CaptureFormat &one, const CaptureFormat &other) {
        return key(one) == key(other);
    };
    formats.erase(std::unique(formats.begin(), formats.end(), isSame), formats.end());
    return formats;
}

Caps chosenCaps(const GstCaps *caps)
{
    const auto candidates = candidatesIn(caps);
    const auto best = std::ranges::max_element(candidates, {}, merit);
    if (best == candidates.end())
        return {};
    GstStructure *chosen = gst_structure_copy(gst_caps_get_structure(caps, best->structure));
    gst_structure_set(chosen, "width", G_TYPE_INT, best->size.width, "height", G_TYPE_INT, best->size.height,
                      nullptr);
    if (!best->format.empty())
        gst_structure_set(chosen, "format", G_TYPE_STRING, best->format.c_str(), nullptr);
    if (best->rate.numerator > 0)
        gst_structure_set(chosen, "framerate", GST_TYPE_FRACTION, best->rate.numerator,
                          best->rate.denominator, nullptr);
    return Caps(gst_caps_new_full(chosen, nullptr));
}

} // namespace skyflare
