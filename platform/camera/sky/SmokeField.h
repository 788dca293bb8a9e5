#pragma once

#include <cstdint>
#include <vector>

namespace skyflare {

/// Cloudy texture without seams: what smoke and haze look like when light falls on them.
///
/// Threads: any.
class SmokeField {
public:
    explicit SmokeField(std::uint64_t seed);

    /// 0 (clear) to 1 (thick), 0.5 on average; repeats every 1 each way.
    [[nodiscard]] float at(float x, float y) const;

private:
    std::vector<float> density_;
};

} // namespace skyflare
