#pragma once

#include "watch/WatchReport.h"

#include <cstdio>

namespace skyflare {

/// One JSON object a line (RFC 8259), each flushed when it is written.
class JsonReport final : public WatchReport {
public:
    explicit JsonReport(std::FILE *stream) : stream_(stream) {}

    /// A camera of a list: one line for each size and rate.
    void camera(const CaptureDevice &device);

    void started(const SessionEvent &event) override;
    void lightPower(double, std::chrono::nanoseconds) override {}
    void status(const std::string &) override {}
    void photo(const Photo &photo) override;
    void lost(const SessionEvent &event) override;
    void summary(const Summary &summary) override;

private:
    std::FILE *stream_;
};

} // namespace skyflare
