#pragma once

#include <string_view>

namespace skyflare {

/// Where the program says what it does, a whole line at a time. Any thread; lines never mix.
class Console {
public:
    Console() = default;
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;
    virtual ~Console() = default;

    /// One line of the running commentary, without its line end. Standard output, unless the host says
    /// otherwise.
    virtual void printLine(std::string_view line) = 0;

    /// One line about something that went wrong outside the program (a damaged file …). Standard error.
    virtual void reportLine(std::string_view line) = 0;
};

} // namespace skyflare
