#include "ui/PictureDelivery.h"

namespace skyflare {

void PictureDelivery::giveUp()
{
    const std::scoped_lock lock(mutex_);
    receiver_ = nullptr;
}

bool PictureDelivery::isWanted() const
{
    const std::scoped_lock lock(mutex_);
    return receiver_ != nullptr;
}

void PictureDelivery::deliver(QImage picture)
{
    const std::scoped_lock lock(mutex_);
    if (receiver_ == nullptr)
        return;
    QMetaObject::invokeMethod(
        receiver_,
        [self = shared_from_this(), picture = std::move(picture)] {
            if (self->isWanted()) // it may have been given up on the way
                self->take_(picture);
        },
        Qt::QueuedConnection);
}

} // namespace skyflare
