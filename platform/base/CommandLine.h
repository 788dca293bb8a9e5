#pragma once

#include "platform/base/Result.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace skyflare {

/// What is wrong with a command line: one line that says what would be right.
Error usageError(std::string message);

/// A line of --help.
std::string helpLine(std::string name, std::string_view help);

/// An option with a value, "--name value" or "--name=value". `Record` is what a program's options are read
/// into.
template <typename Record> struct ValueOption {
    std::string_view name;
    std::string_view placeholder;
    std::string_view help;
    /// Never gets an empty text. The error says what the option takes instead: "a whole number from 1 to 5".
    Result<> (*read)(Record &, std::string_view text);
};

/// An option without one.
template <typename Record> struct Flag {
    std::string_view name;
    std::string_view help;
    bool Record::*member;
};

/// The options of a program, in the order in which --help lists them.
///
/// Threads: any; a value. Borrows the tables.
template <typename Record> struct OptionTables {
    std::span<const ValueOption<Record>> valueOptions;
    std::span<const Flag<Record>> flags;

    /// Takes the option at `index`, which moves on to its value where that is an argument of its own.
    Result<> take(Record &record, std::span<const char *const> arguments, std::size_t &index) const
    {
        const std::string_view argument = arguments[index];
        if (const auto flag = std::ranges::find(flags, argument, &Flag<Record>::name); flag != flags.end()) {
            record.*(flag->member) = true;
            return {};
        }
        const auto equals = argument.find('=');
        const auto option =
            std::ranges::find(valueOptions, argument.substr(0, equals), &ValueOption<Record>::name);
        if (option == valueOptions.end())
            return usageError("there is no option " + std::string(argument) + "; --help lists them");
        std::string_view text;
        if (equals != std::string_view::npos)
            text = argument.substr(equals + 1);
        else if (index + 1 < arguments.size())
            text = arguments[++index];
        const std::string name(option->name);
        if (text.empty())
            return usageError(name + " needs a value: " + std::string(option->placeholder));
        const auto read = option->read(record, text);
        return read ? read
                    : usageError(name + " takes " + read.error().message + ", not \"" + std::string(text) +
                                 "\"");
    }

    [[nodiscard]] std::string help() const
    {
        std::string lines;
        for (const auto &option : valueOptions)
            lines += helpLine(std::string(option.name) + " " + std::string(option.placeholder), option.help);
        for (const auto &flag : flags)
            lines += helpLine(std::string(flag.name), flag.help);
        return lines;
    }
};

/// For the tables: takes any text.
template <auto member, typename Record> Result<> readText(Record &record, std::string_view text)
{
    record.*member = text;
    return {};
}

/// A whole text as a number within limits, or nothing.
template <typename Number>
std::optional<Number> numberWithin(std::string_view text, Number least, Number most)
{
    Number value{};
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem != std::errc{} || end != text.data() + text.size() || !(value >= least && value <= most))
        return {};
    return value;
}

/// For the tables.
template <typename Number>
Result<> readWholeNumber(std::string_view text, std::int64_t least, std::int64_t most, Number &number)
{
    const auto value = numberWithin<std::int64_t>(text, least, most);
    if (!value)
        return usageError("a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    number = static_cast<Number>(*value);
    return {};
}

} // namespace skyflare
