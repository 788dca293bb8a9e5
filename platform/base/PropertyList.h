#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/Result.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace skyflare {

template <typename T, typename Variant> inline constexpr bool isAlternative = false;
template <typename T, typename... Kinds>
inline constexpr bool isAlternative<T, std::variant<Kinds...>> = (std::is_same_v<T, Kinds> || ...);

/// A value of a property list, and its two encodings: XML (Apple's DTD, version 1.0) and binary.
class PropertyList {
public:
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;
    using Value = std::variant<bool, std::int64_t, double, std::string, Bytes, Array, Dictionary>;

    /// From one of the kinds of value itself; no conversion, which would take a text for a boolean.
    template <typename T> PropertyList(T value) requires(isAlternative<T, Value>)
        : value_(std::in_place_type<T>, std::move(value))
    {
    }
    // Deliberate: not by value; gcc 12 sees something uninitialised in the temporary that this would need.
    PropertyList(Value &&value) : value_(std::move(value)) {}
    PropertyList(const Value &value) : value_(value) {}

    [[nodiscard]] const Value &value() const { return value_; }
    [[nodiscard]] Value &value() { return value_; }
    template <typename T> [[nodiscard]] const T *as() const { return std::get_if<T>(&value_); }

    bool operator==(const PropertyList &) const = default;

    /// Reads either encoding. Anything else, and a list cut short, is an error.
    static Result<PropertyList> parse(std::span<const std::uint8_t> encoded);

    /// The binary encoding, which keeps every bit of a real number. Text is made valid UTF-8: anything else
    /// would come out as a list that cannot be read.
    [[nodiscard]] Bytes serialize() const;

private:
    Value value_;
};

} // namespace skyflare
