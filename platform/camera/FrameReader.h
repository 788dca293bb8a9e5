#pragma once

#include "platform/camera/CaptureDevice.h"
#include "platform/camera/GstHandles.h"
#include "platform/image/VideoFrame.h"

#include <optional>

namespace skyflare {

/// Turns samples, in the order in which they come, into VideoFrames that share their bytes.
///
/// Threads: one at a time. The frames stand on their own.
class FrameReader {
public:
    /// A sample that has no picture, one of an unknown kind, one that its device knows to be damaged, or less
    /// of it than its stream promises gives a frame without an image buffer.
    VideoFrame read(Sample sample);

    /// What the stream says of its pictures.
    static CaptureFormat formatOf(const GstSample *sample);

private:
    std::chrono::nanoseconds nextStreamTime(GstSample *sample);

    std::optional<GstClockTime> firstTime_;
    std::chrono::nanoseconds lastStreamTime_{-1};
};

} // namespace skyflare
