#include "store/StorageRoom.h"

#include <algorithm>

namespace skyflare {

void StorageRoom::photoStored(std::size_t bytes)
{
    const std::scoped_lock lock(mutex_);
    lastBytes_[turn_++ % remembered] = bytes;
}

void StorageRoom::setFrameSize(int width, int height)
{
    constexpr std::uint64_t bytesPerPixel = 3;
    const std::scoped_lock lock(mutex_);
    if (width > 0 && height > 0)
        frameBytes_ = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * bytesPerPixel;
}

std::uint64_t StorageRoom::nextBytes() const
{
    const std::uint64_t largest = *std::ranges::max_element(lastBytes_);
    return largest > 0 ? largest : frameBytes_;
}

std::int64_t StorageRoom::photosIn(std::uint64_t freeBytes) const
{
    const std::scoped_lock lock(mutex_);
    const std::uint64_t photos = freeBytes / nextBytes();
    return photos == 0 ? 0 : static_cast<std::int64_t>(photos - 1); // without what is kept back
}

} // namespace skyflare
