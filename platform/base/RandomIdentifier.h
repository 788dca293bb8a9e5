#pragma once

#include "platform/base/RandomSource.h"

#include <string>
#include <string_view>

namespace skyflare {

/// An identifier that says nothing about machine or user: 32 small hexadecimal digits of 16 random bytes.
/// An error where there are no random numbers. Any thread.
Result<std::string> makeRandomIdentifier(RandomSource &random);

/// Whether `text` has that form: what was kept in a file may have been changed by hand.
bool isRandomIdentifier(std::string_view text);

} // namespace skyflare
