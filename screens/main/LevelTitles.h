#pragma once

#include "capture/Levels.h"
#include "platform/base/Localization.h"

#include <string>

namespace skyflare {

/// What a level is called in the user's language. Any thread.
inline std::string titleOf(const SensitivityRow &row)
{
    return localized(row.title);
}

inline std::string titleOf(const FrequencyRow &row)
{
    return std::to_string(row.photos) + ' ' + localized(row.noun);
}

} // namespace skyflare
