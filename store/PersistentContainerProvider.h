#pragma once

#include "platform/base/Result.h"

#include <string>

namespace skyflare {

class PersistentContainer;

/// Whoever owns the process's one persistent container: the application's delegate, or a program's main.
///
/// Threads: any. The container is made on first use, which may come from a photo callback's thread.
class PersistentContainerProvider {
public:
    virtual ~PersistentContainerProvider() = default;
    virtual PersistentContainer &persistentContainer() = 0;
};

/// What a program says before it stops because its stores cannot be loaded.
std::string unresolvedError(const Error &error);

} // namespace skyflare
