#pragma once

#include "platform/base/Console.h"

#include <cstdio>
#include <cstdlib>

namespace skyflare::bench {

/// Ends the program with what is reported: nothing that is measured may fail. Any thread.
class StrictConsole final : public Console {
public:
    void printLine(std::string_view) override {}
    void reportLine(std::string_view line) override
    {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
        std::exit(EXIT_FAILURE);
    }
};

} // namespace skyflare::bench
