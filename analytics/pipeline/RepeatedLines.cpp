#include "analytics/pipeline/RepeatedLines.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr double quietSeconds = 60;
constexpr std::size_t mostLines = 16; ///< more than one fault makes; lines that differ are never left out

} // namespace

std::optional<std::string> RepeatedLines::toWrite(std::string line, double now)
{
    const std::scoped_lock lock(mutex_);
    const auto found = std::ranges::find(written_, line, &Written::line);
    if (found == written_.end()) {
        if (written_.size() == mostLines)
            written_.erase(std::ranges::min_element(written_, {}, &Written::at));
        written_.push_back({line, now, 0});
        return line;
    }
    if (now - found->at < quietSeconds) {
        ++found->leftOut;
        return {};
    }
    found->at = now;
    if (const std::uint64_t leftOut = std::exchange(found->leftOut, 0); leftOut > 0)
        line += " (and " + std::to_string(leftOut) + " times before)";
    return line;
}

} // namespace skyflare
