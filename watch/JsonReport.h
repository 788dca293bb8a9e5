#pragma once

#include "watch/WatchReport.h"

#include <cstdio>

namespace skyflare {

/// One JSON object a line (RFC 8259), each flushed when it is written.
class JsonReport final : public WatchReport {
public:
    explicit JsonReport(std::FILE *stream) : stream_(stream) {}

    /// One line of a list of cameras.
    void camera(const CaptureDevice &device, const CaptureFormat &format);

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
