#pragma once

#include <chrono>
#include <concepts>
#include <thread>

namespace skyflare {

/// Waits for what another thread or process brings about, for as long as a test may take. @return whether it
/// did
template <std::predicate Condition> [[nodiscard]] bool waitUntil(const Condition &holds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

} // namespace skyflare
