#include "platform/base/CommandLine.h"

#include <utility>

namespace skyflare {

Error usageError(std::string message)
{
    return {.domain = "usage", .code = 2, .message = std::move(message)};
}

std::string helpLine(std::string name, std::string_view help)
{
    constexpr std::size_t column = 30;
    name.resize(std::max(column, name.size() + 1), ' ');
    return "  " + name + std::string(help) + "\n";
}

} // namespace skyflare
