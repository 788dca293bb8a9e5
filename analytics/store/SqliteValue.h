#pragma once

#include "platform/base/Bytes.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace skyflare {

/// What a column of a row may hold; std::monostate is NULL.
using SqliteValue = std::variant<std::monostate, std::int64_t, double, std::string, Bytes>;

/// A row, by column name.
using Record = std::map<std::string, SqliteValue, std::less<>>;

/// A value to be bound to a "?"; text and bytes are borrowed for the call.
using SqliteArgument =
    std::variant<std::monostate, std::int64_t, double, std::string_view, std::span<const std::uint8_t>>;

/// Values for the "?" of a statement, in order. Borrows them for the call.
class SqliteArguments {
public:
    SqliteArguments() = default;
    SqliteArguments(std::initializer_list<SqliteArgument> list) : arguments_(list.begin(), list.size()) {}
    SqliteArguments(const std::vector<SqliteArgument> &list) : arguments_(list) {}

    [[nodiscard]] const SqliteArgument *begin() const { return arguments_.data(); }
    [[nodiscard]] const SqliteArgument *end() const { return arguments_.data() + arguments_.size(); }

private:
    std::span<const SqliteArgument> arguments_;
};

inline SqliteArgument argumentOf(const SqliteValue &value)
{
    return std::visit([](const auto &held) { return SqliteArgument(held); }, value);
}

/// Nothing is NULL.
template <typename Number> SqliteArgument argumentOrNull(const std::optional<Number> &number)
{
    return number ? SqliteArgument(*number) : SqliteArgument();
}

} // namespace skyflare
