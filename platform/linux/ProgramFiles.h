#pragma once

#include <filesystem>
#include <vector>

namespace skyflare {

/// Where the files are that come with the program.
struct ProgramFiles {
    /// Of property lists that a deployer may replace, the folder that goes before the others first:
    /// /etc/skyflare, beside the program, and share/NAME of the tree that the program NAME is installed in,
    /// so that each program can be there without the others.
    std::vector<std::filesystem::path> deployment;
    std::filesystem::path localization; ///< the texts in every language

    /// Those of the program that runs. Texts lie beside it where it was built, else in ../share/NAME.
    static ProgramFiles standard();
};

} // namespace skyflare
