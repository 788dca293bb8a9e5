#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace skyflare::bench {

/// Runs a program to its end, its standard output into the file `output`.
/// @return how long it ran, in seconds; less than 0 if it failed.
double runProgram(const std::vector<std::string> &command, const std::string &output);

/// What a process has measured, by name. Another process reads it from a file.
using Numbers = std::map<std::string, double>;
void writeNumbers(const std::filesystem::path &file, const Numbers &numbers);
/// Empty if there is no such file.
Numbers readNumbers(const std::filesystem::path &file);

} // namespace skyflare::bench
