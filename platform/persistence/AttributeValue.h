#pragma once

#include "platform/base/Bytes.h"

#include <memory>
#include <string>
#include <variant>

namespace skyflare {

/// What an attribute holds: nothing, a String, a Date (seconds since 1970) or Binary.
using AttributeValue = std::variant<std::monostate, std::string, double, std::shared_ptr<const ByteSource>>;

} // namespace skyflare
