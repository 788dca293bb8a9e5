#pragma once

#include <QColor>
#include <optional>
#include <string_view>

namespace skyflare {

enum class Appearance { Dark, Light };

/// The colours of the app, by name, each with a value for the dark and one for the light appearance.
/// "AccentColor" is the ground of cards, "Secondary" what is written and drawn on it.
/// @return nothing where there is no colour of that name. Any thread.
std::optional<QColor> namedColor(std::string_view name, Appearance appearance);

} // namespace skyflare
