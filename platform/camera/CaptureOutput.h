#pragma once

#include "platform/base/Bytes.h"
#include "platform/base/DispatchQueue.h"
#include "platform/image/VideoFrame.h"

#include <memory>
#include <optional>

namespace skyflare {

/// Something that a session's pictures go to.
class CaptureOutput {
public:
    CaptureOutput() = default;
    CaptureOutput(const CaptureOutput &) = delete;
    CaptureOutput &operator=(const CaptureOutput &) = delete;
    virtual ~CaptureOutput() = default;
};

/// Takes the frames of a VideoDataOutput, on that output's queue.
class SampleBufferDelegate {
public:
    virtual ~SampleBufferDelegate() = default;

    /// captureOutput:didOutputSampleBuffer:fromConnection:
    virtual void didOutputSampleBuffer(const VideoFrame &frame) = 0;
};

/// The live frames of a session, in their native format.
///
/// Threads: configured on the thread that configures the session, before the session starts; read by the
/// session from then on.
class VideoDataOutput final : public CaptureOutput {
public:
    /// setSampleBufferDelegate:queue: The delegate is not kept alive; the queue is.
    void setSampleBufferDelegate(std::weak_ptr<SampleBufferDelegate> delegate,
                                 std::shared_ptr<SerialQueue> queue)
    {
        delegate_ = std::move(delegate);
        queue_ = std::move(queue);
    }
    [[nodiscard]] std::shared_ptr<SampleBufferDelegate> sampleBufferDelegate() const
    {
        return delegate_.lock();
    }
    [[nodiscard]] const std::shared_ptr<SerialQueue> &sampleBufferCallbackQueue() const { return queue_; }

    /// Whether a frame that comes while the one before is still looked at is dropped.
    void setAlwaysDiscardsLateVideoFrames(bool discards) { alwaysDiscardsLateVideoFrames_ = discards; }
    [[nodiscard]] bool alwaysDiscardsLateVideoFrames() const { return alwaysDiscardsLateVideoFrames_; }

private:
    std::weak_ptr<SampleBufferDelegate> delegate_;
    std::shared_ptr<SerialQueue> queue_;
    bool alwaysDiscardsLateVideoFrames_ = true;
};

/// What a photo should be like. Its size is the full resolution of the running stream.
struct CapturePhotoSettings {
    enum class SmallCopy { No, Yes };
    SmallCopy smallCopy = SmallCopy::No; ///< whether it comes with one, as ReducedPicture has it
};

/// One photo as the camera gave it.
struct CapturePhoto {
    std::shared_ptr<const Bytes> encoded;     ///< PNG or JPEG; empty pointer where the capture failed
    std::shared_ptr<const Bytes> smallCopy{}; ///< JPEG; empty pointer where there is none

    /// The encoded still, nothing where there is none.
    [[nodiscard]] std::shared_ptr<const Bytes> fileDataRepresentation() const { return encoded; }
};

/// Takes the photos of a PhotoOutput, on a thread of the output's choosing.
class PhotoCaptureDelegate {
public:
    virtual ~PhotoCaptureDelegate() = default;

    /// captureOutput:didFinishProcessingPhoto:error:
    virtual void didFinishProcessingPhoto(const CapturePhoto &photo, const std::optional<Error> &error) = 0;
};

/// The stills of a session.
class PhotoOutput : public CaptureOutput {
public:
    // capturePhotoWithSettings:delegate:
    /// Asks for one photo and returns; the delegate hears of it once, also when it fails. The delegate is
    /// kept alive until then. Any thread.
    virtual void capturePhoto(const CapturePhotoSettings &settings,
                              std::shared_ptr<PhotoCaptureDelegate> delegate) = 0;
};

} // namespace skyflare
