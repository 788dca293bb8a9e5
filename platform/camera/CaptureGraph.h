#pragma once

#include "platform/camera/CameraSource.h"
#include "platform/camera/GstErrors.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace skyflare {

/// Hears what a graph does, on GStreamer's threads.
class GraphObserver {
public:
    virtual ~GraphObserver() = default;

    /// The next frame, on the streaming thread.
    /// @return false if no more are wanted: then the stream ends.
    virtual bool sampleArrived(Sample sample) = 0;
    /// No more frames come. On the streaming thread.
    virtual void streamEnded() = 0;
    virtual void errorReported(const GraphError &error) = 0;
};

/// The elements from a camera to the program: `source ! (clocksync | queue) ! (videoconvert) ! appsink`.
///
/// A raw format that VideoFrame does not know is converted on the way; everything else passes untouched.
/// Threads: made, played and ended on one thread that may block; the observer is called on others, until
///     the graph's end is through. Owns its elements; borrows its observer.
class CaptureGraph {
public:
    static Result<std::unique_ptr<CaptureGraph>> build(const CameraSource &source, GraphObserver &observer);

    /// For build().
    explicit CaptureGraph(GraphObserver &observer) : observer_(observer) {}
    CaptureGraph(const CaptureGraph &) = delete;
    CaptureGraph &operator=(const CaptureGraph &) = delete;
    /// Takes the graph down: waits until its threads have come home.
    ~CaptureGraph();

    /// @return false if it refuses; mostly the observer has heard why before.
    [[nodiscard]] bool play();

private:
    Result<> addElements(Pacing pacing);
    Result<GstElement *> add(const char *factory);
    void setUpSink(Pacing pacing);
    void watchBus();
    Result<> addSource(const CameraSource &source);
    bool link(GstPad *sourcePad);
    void noteMissing(GstMessage *message);
    void noteError(GstMessage *message);

    static GstFlowReturn newSample(GstElement *sink, CaptureGraph &self);

    GraphObserver &observer_;
    Pipeline pipeline_;
    GstElement *pacer_ = nullptr; ///< clocksync, queue or nothing; the pipeline owns these
    GstElement *converter_ = nullptr;
    GstElement *sink_ = nullptr;
    std::atomic<bool> isLinked_ = false;
    std::mutex mutex_;
    std::string missingDecoders_;
};

} // namespace skyflare
