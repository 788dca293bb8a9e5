#pragma once

#include "platform/base/Result.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace skyflare {

/// One value of the remote configuration, as text or as a number.
///
/// | In the answer  | stringValue()   | numberValue()                                              |
/// |----------------|-----------------|------------------------------------------------------------|
/// | text           | itself          | the decimal number that it is, white space around it apart; else 0 |
/// | number         | as JSON has it  | itself                                                     |
/// | true, false    | "true", "false" | 1, 0                                                       |
/// | object, list   | compact JSON    | 0                                                          |
/// | null, missing  | ""              | 0                                                          |
///
/// Threads: any; a value.
class FIRRemoteConfigValue {
public:
    FIRRemoteConfigValue() = default;
    FIRRemoteConfigValue(std::string text, double number) : text_(std::move(text)), number_(number) {}

    [[nodiscard]] const std::string &stringValue() const { return text_; }
    [[nodiscard]] double numberValue() const { return number_; }

    /// The value read as JSON, if it is an object with nothing but texts in it, be it given as an object or
    /// as a text that holds one.
    [[nodiscard]] std::optional<std::map<std::string, std::string>> textsByKey() const;

private:
    std::string text_;
    double number_ = 0;
};

using FIRRemoteConfigValues = std::map<std::string, FIRRemoteConfigValue, std::less<>>;

/// Reads what a server has sent: one JSON object, nested 16 deep at most.
Result<FIRRemoteConfigValues> parseRemoteConfig(std::string_view json);

} // namespace skyflare
