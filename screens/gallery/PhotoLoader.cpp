#include "screens/gallery/PhotoLoader.h"

#include "ui/PixelImage.h"

#include <QThreadPool>
#include <mutex>

namespace skyflare {

namespace {

/// Its own, so that nobody who looks at one photo waits for the thumbnails of others. Two: the small picture
/// does not wait for the sharp one.
QThreadPool &loaderThreads()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(2);
    return pool;
}

QImage decoded(const Image &photo, QSize box, PhotoLoader::Wish wish)
{
    if (wish == PhotoLoader::Wish::AtOnce) {
        const auto small = photo.quickThumbnail(box.width(), box.height());
        return small ? toImage(*small) : QImage();
    }
    const bool isWhole = box.width() >= photo.width() && box.height() >= photo.height();
    const auto pixels = isWhole ? photo.pixels() : photo.thumbnail(box.width(), box.height());
    return pixels ? toImage(*pixels) : QImage();
}

} // namespace

/// One photo on its way from a worker to its loader, if that still wants it.
struct PhotoLoader::Request {
    std::mutex mutex;
    PhotoLoader *loader; ///< nullptr once given up

    explicit Request(PhotoLoader *for_) : loader(for_) {}

    [[nodiscard]] bool isWanted()
    {
        const std::scoped_lock lock(mutex);
        return loader != nullptr;
    }
    static void deliver(const std::shared_ptr<Request> &request, QImage picture)
    {
        const std::scoped_lock lock(request->mutex);
        if (PhotoLoader *const to = request->loader)
            QMetaObject::invokeMethod(
                to, [to, request, picture = std::move(picture)] { to->take(request, picture); },
                Qt::QueuedConnection);
    }
};

void PhotoLoader::load(const Image &photo, QSize box, Wish wish)
{
    cancel();
    request_ = std::make_shared<Request>(this);
    loaderThreads().start([request = request_, photo, box, wish] {
        if (request->isWanted())
            Request::deliver(request, decoded(photo, box, wish));
    });
}

void PhotoLoader::cancel()
{
    const auto request = std::move(request_);
    request_ = nullptr;
    if (!request)
        return;
    const std::scoped_lock lock(request->mutex);
    request->loader = nullptr;
}

void PhotoLoader::take(const std::shared_ptr<Request> &from, const QImage &picture)
{
    if (request_ != from) // another was asked for since
        return;
    request_ = nullptr;
    emit loaded(picture);
}

} // namespace skyflare
