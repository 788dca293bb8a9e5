#pragma once

#include "platform/camera/CaptureSession.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace skyflare {

/// What a run of skyflare-watch tells whoever started it.
///
/// Threads: main.
class WatchReport {
public:
    struct Photo {
        std::string uuid;
        std::chrono::nanoseconds streamTime{};
        float difference = 0;
        std::int64_t total = 0; ///< stored photos, those of earlier runs too
    };
    struct Summary {
        FrameStatistics frames;
        std::int64_t triggers = 0;
        std::int64_t photos = 0; ///< of this run
        double filmSeconds = 0;  ///< of a camera: of its stream
        double wallSeconds = 0;
    };

    WatchReport() = default;
    WatchReport(const WatchReport &) = delete;
    WatchReport &operator=(const WatchReport &) = delete;
    virtual ~WatchReport() = default;

    virtual void started(const SessionEvent &event) = 0;
    virtual void lightPower(double brightness, std::chrono::nanoseconds streamTime) = 0;
    virtual void status(const std::string &text) = 0;
    virtual void photo(const Photo &photo) = 0;
    virtual void lost(const SessionEvent &event) = 0;
    virtual void summary(const Summary &summary) = 0;
};

} // namespace skyflare
