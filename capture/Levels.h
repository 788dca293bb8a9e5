#pragma once

#include "platform/base/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace skyflare {

/// How small a rise of brightness counts as a burst. A higher sensitivity asks for a smaller rise.
enum class SensitivityLevel { UltraLow, VeryLow, Low, Medium, High, VeryHigh, Extreme };

struct SensitivityRow {
    std::string_view title;
    float sensivity; ///< as it is stored in the settings
};

inline constexpr std::array<SensitivityRow, 7> sensitivityRows{{
    {"Ultra Low", 0.4f},
    {"Very Low", 0.3f},
    {"Low", 0.2f},
    {"Medium", 0.1f},
    {"High", 0.05f},
    {"Very High", 0.01f},
    {"Extreme", 0.005f},
}};

constexpr const SensitivityRow &row(SensitivityLevel level)
{
    return sensitivityRows[static_cast<std::size_t>(level)];
}

/// The least rise from one frame to the next that counts as a burst, exclusive.
constexpr double brightnessThreshold(SensitivityLevel level)
{
    return static_cast<double>(row(level).sensivity);
}

// Deliberate: the widened floats, not the decimals 0.4 to 0.005.
static_assert(brightnessThreshold(SensitivityLevel::UltraLow) == 0.4000000059604645);
static_assert(brightnessThreshold(SensitivityLevel::VeryLow) == 0.30000001192092896);
static_assert(brightnessThreshold(SensitivityLevel::Low) == 0.20000000298023224);
static_assert(brightnessThreshold(SensitivityLevel::Medium) == 0.10000000149011612);
static_assert(brightnessThreshold(SensitivityLevel::High) == 0.05000000074505806);
static_assert(brightnessThreshold(SensitivityLevel::VeryHigh) == 0.009999999776482582);
static_assert(brightnessThreshold(SensitivityLevel::Extreme) == 0.004999999888241291);

/// The level that a command line names: a title in any case of letters, `-` for the blank ("very-high").
constexpr std::optional<SensitivityLevel> sensitivityLevelNamed(std::string_view name)
{
    const auto folded = [](char letter) { return letter == '-' ? ' ' : lowerAscii(letter); };
    for (std::size_t index = 0; index < sensitivityRows.size(); ++index) {
        const std::string_view title = sensitivityRows[index].title;
        if (std::equal(title.begin(), title.end(), name.begin(), name.end(),
                       [folded](char left, char right) { return folded(left) == folded(right); }))
            return static_cast<SensitivityLevel>(index);
    }
    return std::nullopt;
}

static_assert(sensitivityLevelNamed("very-high") == SensitivityLevel::VeryHigh);
static_assert(sensitivityLevelNamed("Ultra Low") == SensitivityLevel::UltraLow);
static_assert(sensitivityLevelNamed("EXTREME") == SensitivityLevel::Extreme);
static_assert(!sensitivityLevelNamed("high-") && !sensitivityLevelNamed("hig") && !sensitivityLevelNamed(""));

/// How many photos a second may be taken at most.
enum class CaptureFrequency { One, Two, Three, Four, Five };

struct FrequencyRow {
    int photos;             ///< a second
    std::string_view noun;  ///< the key under which the title's word is localised
    double captureInterval; ///< seconds
};

inline constexpr std::array<FrequencyRow, 5> frequencyRows{{
    {1, "photo", 1.0},
    {2, "photos", 0.5},
    {3, "photos", 0.333}, // Deliberate: not one third.
    {4, "photos", 0.25},
    {5, "photos", 0.2},
}};

constexpr double captureInterval(CaptureFrequency frequency)
{
    return frequencyRows[static_cast<std::size_t>(frequency)].captureInterval;
}

} // namespace skyflare
