#pragma once

#include <string_view>

namespace skyflare {

/// Whether an app of that version must be updated: its digits, read as one number, are less than `least`.
/// 1.2.3 counts as 123, so versions must keep their number of digits. False for what is not such a version.
bool isUpdateForced(std::string_view shortVersion, double least);

} // namespace skyflare
