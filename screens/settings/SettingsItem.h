#pragma once

#include <optional>
#include <string>

namespace skyflare {

enum class SettingType { AutoSave, ManualFocus, Language };

/// One row of the settings: what it says, and how its switch stands. A value.
struct SettingsItem {
    SettingType type;
    std::string title;
    std::optional<std::string> subtitle;
    std::optional<std::string> image; ///< a symbol's name
    bool isOn;
};

} // namespace skyflare
