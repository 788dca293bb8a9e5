#pragma once

#include <memory>
#include <string>

namespace skyflare {

/// Keeps the screen awake, however long nobody touches it.
///
/// Threads: main.
class IdleInhibitor {
public:
    /// The screen stays awake as long as somebody has one. It ends with the program, too.
    using Inhibition = std::shared_ptr<const void>;

    IdleInhibitor() = default;
    IdleInhibitor(const IdleInhibitor &) = delete;
    IdleInhibitor &operator=(const IdleInhibitor &) = delete;
    virtual ~IdleInhibitor() = default;

    /// @param reason  for the user: what is going on
    [[nodiscard]] virtual Inhibition inhibit(const std::string &reason) = 0;
};

} // namespace skyflare
