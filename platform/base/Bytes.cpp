#include "platform/base/Bytes.h"

#include <algorithm>

namespace skyflare {

Result<std::shared_ptr<const Bytes>> ByteSource::readAll() const
{
    auto all = std::make_shared<Bytes>(size());
    if (const auto done = read(0, *all); !done)
        return done.error();
    return std::shared_ptr<const Bytes>(std::move(all));
}

Result<> MemoryBytes::read(std::uint64_t offset, std::span<std::uint8_t> into) const
{
    if (offset > bytes_->size() || into.size() > bytes_->size() - offset)
        return Error{"bytes", 0, "read past the end of " + std::to_string(bytes_->size()) + " bytes"};
    std::copy_n(bytes_->begin() + static_cast<std::ptrdiff_t>(offset), into.size(), into.begin());
    return {};
}

} // namespace skyflare
