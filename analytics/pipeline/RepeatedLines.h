#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace skyflare {

/// Keeps a log readable while something goes wrong again and again, as on a full disk: the same line is
/// written once a minute, and says how often it was left out in between.
///
/// Threads: any.
class RepeatedLines {
public:
    /// @param now  seconds of uptime
    /// @return the line as it is to be written; nothing where it was written less than a minute ago
    std::optional<std::string> toWrite(std::string line, double now);

private:
    struct Written {
        std::string line;
        double at = 0; ///< seconds of uptime
        std::uint64_t leftOut = 0;
    };

    std::mutex mutex_;
    std::vector<Written> written_; ///< the latest ones
};

} // namespace skyflare
