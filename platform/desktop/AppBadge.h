#pragma once

#include <cstddef>

namespace skyflare {

/// The number on the app's icon.
///
/// Threads: main.
class AppBadge {
public:
    AppBadge() = default;
    AppBadge(const AppBadge &) = delete;
    AppBadge &operator=(const AppBadge &) = delete;
    virtual ~AppBadge() = default;

    /// @param count  0: no number is seen
    virtual void setCount(std::size_t count) = 0;
};

} // namespace skyflare
