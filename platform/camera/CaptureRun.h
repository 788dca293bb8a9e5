#pragma once

#include "platform/camera/CaptureGraph.h"
#include "platform/camera/CaptureSession.h"
#include "platform/camera/FrameDelivery.h"
#include "platform/camera/FrameReader.h"
#include "platform/camera/GraphCount.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace skyflare {

/// One run of a session, from startRunning() until its graph is down.
///
/// What happens to it is told in this order: Started; then one of Ended, Lost and Failed, or none if it was
/// stopped; Stopped.
/// Threads: a thread of its own waits until the run before has let go of the device, builds the graph, waits,
///     and takes it down; if that thread hangs it is left behind with all that it shares, the device among
///     it, which it keeps alive. Everything else happens on the caller's
///     thread, GStreamer's streaming threads, and the control queue, where the handler is called; nothing
///     there waits for the graph.
class CaptureRun final : public GraphObserver, public std::enable_shared_from_this<CaptureRun> {
public:
    struct Parts {
        std::shared_ptr<CameraSource> source;
        std::shared_ptr<FrameDelivery> delivery;
        std::shared_ptr<StillRequests> stills;
        std::shared_ptr<SerialQueue> frameQueue; ///< where frames may still wait at the end; may be empty
        std::shared_ptr<SerialQueue> controlQueue;
        std::shared_ptr<GraphCount> graphs;
        CaptureSession::EventHandler eventHandler;
    };

    explicit CaptureRun(Parts parts);

    /// Waits until the first frame is there, or it is clear that none comes, 5 s at most. Once.
    void start();
    /// Returns at once. Any thread.
    void stop();
    [[nodiscard]] bool isOver() const;
    [[nodiscard]] FrameStatistics statistics() const { return parts_.delivery->statistics(); }

    bool sampleArrived(Sample sample) override;
    void streamEnded() override;
    void errorReported(const GraphError &error) override;

private:
    using Kind = SessionEvent::Kind;

    void watchForRemoval();
    void runGraph();
    std::shared_ptr<void> takeDevice();
    void buildAndPlay(std::unique_ptr<CaptureGraph> &graph);
    void waitUntilOver();
    void notePicture(const VideoFrame &frame, CaptureFormat format);
    void endStream();
    void noteFault(const std::string &line);
    void finish(std::optional<SessionEvent> ending);
    void reportDown(const std::string &message);
    void watchForSilence(std::int64_t pictures, int silentTurns);
    void report(SessionEvent event) const;
    [[nodiscard]] SessionEvent event(Kind kind, std::string message = {}) const;
    /// Under the lock.
    [[nodiscard]] std::string lineFor(const GraphError &error) const;

    const Parts parts_;
    const std::string name_;
    const bool isLive_;
    std::shared_ptr<void> removal_;            ///< start(), then the run's own thread
    std::atomic<bool> waitsForDevice_ = false; ///< which the run before still has
    FrameReader reader_;                       ///< streaming thread
    std::atomic<std::int64_t> pictures_ = 0;   ///< frames with an image buffer that have come so far
    std::atomic<double> streamSeconds_ = 0;    ///< of the newest frame

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool hasFrames_ = false;    ///< at least one with a picture
    bool isStreamOver_ = false; ///< no more frames come
    bool isOver_ = false;       ///< the graph is to come down
    bool isReportedDown_ = false;
    std::optional<GraphError> failure_; ///< told when the frames that were read before it are through
};

} // namespace skyflare
