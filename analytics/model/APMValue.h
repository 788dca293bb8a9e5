#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace skyflare {

struct APMParameter;
/// Parameters in the order in which they were given; no name stands twice.
using APMParameters = std::vector<APMParameter>;

/// What a parameter or user property may hold: a text, a whole number, a real number, or an array of
/// dictionaries of parameters.
///
/// Threads: any; a value.
class APMValue {
public:
    using Array = std::vector<APMParameters>;
    using Held = std::variant<std::string, std::int64_t, double, Array>;

    explicit APMValue(std::string text); ///< any bytes; UTF-8 is expected
    explicit APMValue(std::int64_t number);
    explicit APMValue(double number);
    explicit APMValue(Array items);

    [[nodiscard]] const Held &held() const { return held_; }
    [[nodiscard]] const std::string *text() const { return std::get_if<std::string>(&held_); }
    [[nodiscard]] const std::int64_t *integer() const { return std::get_if<std::int64_t>(&held_); }
    [[nodiscard]] const double *real() const { return std::get_if<double>(&held_); }
    [[nodiscard]] const Array *array() const { return std::get_if<Array>(&held_); }

    bool operator==(const APMValue &) const;

private:
    Held held_;
};

struct APMParameter {
    std::string name;
    APMValue value;

    bool operator==(const APMParameter &) const = default;
};

// An array holds parameters, so what makes and destroys one has to know what these are.
inline APMValue::APMValue(std::string text) : held_(std::move(text)) {}
inline APMValue::APMValue(std::int64_t number) : held_(number) {}
inline APMValue::APMValue(double number) : held_(number) {}
inline APMValue::APMValue(Array items) : held_(std::move(items)) {}

inline bool APMValue::operator==(const APMValue &other) const
{
    return held_ == other.held_;
}

} // namespace skyflare
