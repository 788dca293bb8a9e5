#pragma once

#include "platform/camera/FramePreview.h"
#include "platform/image/PictureScaler.h"

#include <QImage>
#include <QSize>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace skyflare {

/// Turns live frames into pictures of the size at which they are seen, on a thread of its own.
///
/// A frame that comes while the one before is still turned, or has not been fetched yet, is passed over: no
/// frame is kept waiting, and a window that shows nothing costs nothing.
/// Threads: show() on the video queue, the rest on any. It is alive while a frame is being turned.
class PreviewFeed final : public FramePreview, public std::enable_shared_from_this<PreviewFeed> {
public:
    /// @param arrived  called on the feed's thread when there is a picture to fetch.
    explicit PreviewFeed(std::function<void()> arrived);

    /// In pixels; no frame is turned while it is empty.
    void setTargetSize(QSize pixels);
    void show(const VideoFrame &frame) override;

    /// The newest picture; null before the first.
    [[nodiscard]] QImage fetch();
    /// Of the newest frame; empty before the first.
    [[nodiscard]] QSize frameSize() const;
    /// Calls nobody from now on.
    void close();

private:
    void turn(const VideoFrame &frame, QSize pixels);
    QImage &freePicture(QSize pixels);

    mutable std::mutex mutex_;
    std::function<void()> arrived_;
    QSize target_;
    QSize frameSize_;
    QImage newest_;
    bool isFetched_ = true;
    bool isBusy_ = false;

    // The feed's thread alone.
    PictureScaler scaler_;
    std::array<QImage, 3> pictures_; ///< one is seen, one is fetched, one is written
};

} // namespace skyflare
