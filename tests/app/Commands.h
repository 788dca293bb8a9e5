#pragma once

#include <QString>
#include <functional>
#include <optional>

namespace skyflare {

/// Tries once to do something; nothing while that cannot be done, else what is answered.
using Attempt = std::function<std::optional<QString>()>;

/// What a command's line asks for; null where there is no such command. README.md lists them. Main thread.
Attempt attemptFor(const QString &line);

} // namespace skyflare
