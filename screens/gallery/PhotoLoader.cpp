#include "screens/gallery/PhotoLoader.h"

#include "ui/PixelImage.h"

#include <QThreadPool>

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

void PhotoLoader::load(const Image &photo, QSize box, Wish wish)
{
    cancel();
    delivery_ = std::make_shared<PictureDelivery>(*this, [this](const QImage &picture) {
        delivery_ = nullptr;
        emit loaded(picture);
    });
    loaderThreads().start([delivery = delivery_, photo, box, wish] {
        if (delivery->isWanted())
            delivery->deliver(decoded(photo, box, wish));
    });
}

void PhotoLoader::cancel()
{
    if (delivery_)
        delivery_->giveUp();
    delivery_ = nullptr;
}

} // namespace skyflare
