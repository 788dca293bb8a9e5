#include "bench/Process.h"

#include "bench/Machine.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <limits>

namespace skyflare::bench {

double runProgram(const std::vector<std::string> &command, const std::string &output)
{
    std::vector<char *> arguments;
    for (const std::string &part : command)
        arguments.push_back(const_cast<char *>(part.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    const double start = now();
    pid_t child = 0;
    const bool isStarted =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    int status = 1;
    const bool isOver = isStarted && waitpid(child, &status, 0) == child;
    return isOver && status == 0 ? now() - start : -1;
}

void writeNumbers(const std::filesystem::path &file, const Numbers &numbers)
{
    std::ofstream out(file);
    out.precision(std::numeric_limits<double>::max_digits10);
    for (const auto &[name, value] : numbers)
        out << name << ' ' << value << '\n';
}

Numbers readNumbers(const std::filesystem::path &file)
{
    Numbers numbers;
    std::ifstream in(file);
    double value = 0;
    for (std::string name; in >> name >> value;)
        numbers[name] = value;
    return numbers;
}

} // namespace skyflare::bench
