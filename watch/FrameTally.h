#pragma once

#include "capture/CaptureManager.h"
#include "platform/base/Clock.h"
#include "watch/FramesCsv.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace skyflare {

/// Counts what was measured, and remembers the triggers whose photos are still on their way.
///
/// Threads: didMeasure() on videoQueue, the rest on main.
/// Borrows its clock, which is the one that dates the photos.
class FrameTally {
public:
    /// A frame that asked for a photo.
    struct Trigger {
        std::chrono::nanoseconds streamTime{};
        double difference = 0;
        double secondsSince1970 = 0;
    };
    struct Counts {
        std::int64_t triggers = 0;
        std::chrono::nanoseconds lastStreamTime{};
    };

    /// @param csv  takes every frame as well; may be null
    FrameTally(const Clock &clock, std::unique_ptr<FramesCsv> csv) : clock_(clock), csv_(std::move(csv)) {}

    void didMeasure(const FrameMeasurement &measurement);

    /// Takes the trigger that a photo stored at `createdDate` belongs to: the one of that very moment, as
    /// films have it, else the oldest one of the last seconds. Nothing where there is none.
    std::optional<Trigger> takeTrigger(double createdDate);

    [[nodiscard]] Counts counts() const;

    /// Writes what is left of the table. An error where a line of it could not be written.
    Result<> finish();

private:
    const Clock &clock_;
    const std::unique_ptr<FramesCsv> csv_;
    mutable std::mutex mutex_;
    Counts counts_;
    std::deque<Trigger> waiting_;
};

} // namespace skyflare
