#pragma once

#include <QImage>
#include <QObject>
#include <functional>
#include <memory>
#include <mutex>

namespace skyflare {

/// The way of one wish's pictures from a worker to whoever wished for them on main, as long as they do.
///
/// Threads: made and given up on main; the rest on any thread. Shared by both ends.
class PictureDelivery : public std::enable_shared_from_this<PictureDelivery> {
public:
    /// @param take  runs on main, for each picture
    PictureDelivery(QObject &receiver, std::function<void(const QImage &)> take)
        : receiver_(&receiver), take_(std::move(take))
    {
    }

    /// Nothing is taken any more, not even what is on its way. Before the receiver goes.
    void giveUp();
    /// Whether it is worth while to begin.
    [[nodiscard]] bool isWanted() const;
    void deliver(QImage picture);

private:
    mutable std::mutex mutex_;
    QObject *receiver_; ///< null once given up
    const std::function<void(const QImage &)> take_;
};

} // namespace skyflare
