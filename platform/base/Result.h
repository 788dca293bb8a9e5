#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace skyflare {

/// Why something could not be done.
struct Error {
    std::string domain;                               ///< who says so: "SQLite", "camera", "png" …
    int code = 0;                                     ///< the domain's own number, 0 where it has none
    std::string message;                              ///< one line for a person, without a full stop
    std::map<std::string, std::string> userInfo = {}; ///< what else is known: a path, a device …

    /// The line as consoles print it: "disk full (SQLite 13)".
    [[nodiscard]] std::string description() const
    {
        return message + " (" + domain + " " + std::to_string(code) + ")";
    }
};

/// A value, or the error that stands in its place. Names as in std::expected, which gcc 12 lacks.
///
/// Asking for the part that is not there is a programming error and aborts.
template <typename T = std::monostate> class [[nodiscard]] Result {
public:
    Result() requires std::is_default_constructible_v<T>
    = default;
    // Deliberate: not by value; gcc 12 sees something uninitialised in the temporaries that this would need.
    Result(T &&value) : held_(std::in_place_index<0>, std::move(value)) {}
    Result(const T &value) requires std::is_copy_constructible_v<T> : held_(std::in_place_index<0>, value) {}
    Result(Error &&error) : held_(std::in_place_index<1>, std::move(error)) {}
    Result(const Error &error) : held_(std::in_place_index<1>, error) {}

    [[nodiscard]] bool has_value() const { return held_.index() == 0; }
    explicit operator bool() const { return has_value(); }

    T &value() & { return *require<0>(); }
    const T &value() const & { return *require<0>(); }
    T &&value() && { return std::move(*require<0>()); }
    [[nodiscard]] const Error &error() const { return *require<1>(); }

    T &operator*() & { return value(); }
    const T &operator*() const & { return value(); }
    T &&operator*() && { return std::move(*this).value(); }
    T *operator->() { return require<0>(); }
    const T *operator->() const { return require<0>(); }

private:
    template <std::size_t index> auto *require()
    {
        auto *part = std::get_if<index>(&held_);
        if (!part)
            std::abort();
        return part;
    }
    template <std::size_t index> const auto *require() const
    {
        const auto *part = std::get_if<index>(&held_);
        if (!part)
            std::abort();
        return part;
    }

    std::variant<T, Error> held_;
};

} // namespace skyflare
