#pragma once

#include "platform/base/Handle.h"
#include "platform/base/Result.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace skyflare {

class Database;

void finalizeStatement(sqlite3_stmt *statement);
using StatementHandle = Handle<sqlite3_stmt, &finalizeStatement>;

/// A compiled statement on loan from its Database, which keeps it for the next time when this ends.
///
/// Threads: that of its database's user. Its database must outlive it. Parameters and columns count from
/// 1 and 0, as SQLite counts them.
class Statement {
public:
    Statement(Database &database, StatementHandle handle);
    Statement(Statement &&) noexcept = default;
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    Statement &operator=(Statement &&) = delete;
    ~Statement();

    Result<> bind(int parameter, std::int64_t value);
    Result<> bind(int parameter, double value);
    /// Copies nothing: text and bytes must stay until the statement ends. What is not bound is NULL.
    Result<> bind(int parameter, std::string_view text);
    Result<> bind(int parameter, std::span<const std::uint8_t> bytes);

    /// @return true when there is a row, false at the end.
    Result<bool> step();

    /// The column as what it is stored as; nothing if it is stored as something else.
    [[nodiscard]] std::optional<std::int64_t> integer(int column) const;
    [[nodiscard]] std::optional<double> real(int column) const; ///< integers too
    [[nodiscard]] std::optional<std::string> text(int column) const;
    /// There until the next step.
    [[nodiscard]] std::optional<std::span<const std::uint8_t>> bytes(int column) const;

    [[nodiscard]] int columnCount() const;
    [[nodiscard]] std::string columnName(int column) const;

private:
    Database *database_;
    StatementHandle handle_;

    [[nodiscard]] Result<> checked(int code) const;
};

} // namespace skyflare
