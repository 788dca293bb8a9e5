#include "platform/base/DispatchQueue.h"

#include <cstdio>
#include <cstdlib>

namespace skyflare {

void assertOn(const SerialQueue &queue, const char *function)
{
    if (queue.isCurrent())
        return;
    std::fprintf(stderr, "%s() must run on %s\n", function, queue.label().c_str());
    std::abort();
}

} // namespace skyflare
