#pragma once

#include "analytics/model/APMValue.h"

#include <concepts>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

namespace skyflare {

/// What a caller handed in as a name or a value, seen before anybody has looked at its kind: nothing (nil), a
/// text, a value, or an object of some other class.
///
/// Threads: any. Borrows what it shows: pass it on, never keep it.
class APMObject {
public:
    struct Other {
        std::string_view className; ///< "NSData"
    };

    APMObject(std::nullopt_t) {}
    APMObject(const std::optional<std::string_view> &text)
    {
        if (text)
            seen_ = *text;
    }
    template <std::convertible_to<std::string_view> Text> APMObject(const Text &text)
        : seen_(std::string_view(text))
    {
    }
    APMObject(const APMValue &value) : seen_(&value) {}
    APMObject(Other other) : seen_(other) {}

    [[nodiscard]] bool isNil() const { return std::holds_alternative<std::monostate>(seen_); }
    [[nodiscard]] const std::string_view *text() const { return std::get_if<std::string_view>(&seen_); }
    [[nodiscard]] const APMValue *value() const
    {
        const auto *held = std::get_if<const APMValue *>(&seen_);
        return held ? *held : nullptr;
    }
    [[nodiscard]] const Other *other() const { return std::get_if<Other>(&seen_); }

private:
    std::variant<std::monostate, std::string_view, const APMValue *, Other> seen_;
};

} // namespace skyflare
