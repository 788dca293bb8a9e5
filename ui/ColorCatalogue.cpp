#include "ui/ColorCatalogue.h"

#include <algorithm>
#include <array>

namespace skyflare {

namespace {

struct ColorRow {
    std::string_view name;
    QRgb dark; ///< 0xAARRGGBB
    QRgb light;
};

// Night first: nothing is pure white, and one colour is warm. By day the pair changes places.
constexpr std::array<ColorRow, 13> colorRows{{
    {"AccentColor", 0xFF1B1D3A, 0xFFF4F1FA},
    {"Secondary", 0xFFFFC96B, 0xFF644000},
    {"Ground", 0xFF05060C, 0xFFE7E4EF},        // behind everything
    {"Glass", 0xCC12142A, 0xE6FBF9FF},         // panels over the preview
    {"GlassBorder", 0x1FFFFFFF, 0x241B1D3A},   // their rim
    {"Text", 0xFFF2E9D8, 0xFF1B1D3A},          // what is to be read first
    {"SecondaryText", 0xFFBDB7AB, 0xFF4A4963}, // captions
    {"OverPicture", 0xFFFFC96B, 0xFFFFC96B},   // what is drawn on the live picture itself, which is night
    {"NightInk", 0xFF1B1D3A, 0xFF1B1D3A},      // what is written on a ground of OverPicture
    {"Sky", 0xFF05060C, 0xFF1C1E3E},           // while there is no picture: night, or dusk by day; above
    {"SkyLow", 0xFF1A1C3E, 0xFF4B3F63},        // and at the horizon
    {"Pressed", 0x24FFC96B, 0x24644000},       // over what is held down
    {"Warning", 0xFFFF9C8A, 0xFF9A1B1B},       // what went wrong
}};

} // namespace

std::optional<QColor> namedColor(std::string_view name, Appearance appearance)
{
    const auto *row = std::ranges::find(colorRows, name, &ColorRow::name);
    if (row == colorRows.end())
        return std::nullopt;
    return QColor::fromRgba(appearance == Appearance::Dark ? row->dark : row->light);
}

} // namespace skyflare
