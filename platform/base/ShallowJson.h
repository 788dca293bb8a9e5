#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace skyflare {

// JSON (RFC 8259) from where anybody may have written it. Nothing for what is no JSON, or is nested more than
// 16 deep: to let go of it, or to write it out again, could end the stack. Any thread.

std::optional<nlohmann::json> parseShallowJson(std::string_view text);
std::optional<nlohmann::json> parseShallowJson(std::span<const std::uint8_t> text);

} // namespace skyflare
