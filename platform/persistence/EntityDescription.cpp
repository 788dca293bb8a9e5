#include "platform/persistence/EntityDescription.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace skyflare {

std::size_t EntityDescription::indexOf(std::string_view key) const
{
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const auto &each) { return each.name == key; });
    if (found == attributes.end())
        programmingError("entity " + name + " has no attribute \"" + std::string(key) + '"');
    return static_cast<std::size_t>(found - attributes.begin());
}

void programmingError(const std::string &why)
{
    std::fprintf(stderr, "persistence: %s\n", why.c_str());
    std::abort();
}

} // namespace skyflare
