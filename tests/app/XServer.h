#pragma once

#include "tests/fakes/ChildProcess.h"

#include <doctest/doctest.h>

#include <string>

namespace skyflare {

/// An X server that nobody looks at. It takes a number that is free.
struct XServer {
    ChildProcess process{
        {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"}};
    std::string display;

    XServer()
    {
        const auto number = process.readLine();
        if (!number)
            process.kill();
        REQUIRE_MESSAGE(number, "Xvfb does not come up: " << process.errors());
        display = ':' + *number;
    }
};

} // namespace skyflare
