#include "platform/persistence/RowBytes.h"

#include "platform/persistence/Graves.h"
#include "platform/persistence/StoreParts.h"

namespace skyflare {

RowBytes::~RowBytes()
{
    parts_->registry.forget(key_);
}

std::shared_ptr<const Bytes> RowBytes::kept() const
{
    const std::scoped_lock lock(mutex_);
    return kept_;
}

Result<> RowBytes::readRow(Database &database, std::uint64_t offset, std::span<std::uint8_t> into) const
{
    const std::string &column = key_.table->entity().attributes[key_.attribute].name;
    const auto blob = openRow(database, *key_.table, column, key_.objectID);
    if (!blob)
        return blob.error();
    return blob->read(offset, into);
}

Result<> RowBytes::read(std::uint64_t offset, std::span<std::uint8_t> into) const
{
    if (const auto memory = kept())
        return MemoryBytes(memory).read(offset, into);
    const auto reader = parts_->readers.acquire();
    if (!reader)
        return reader.error();
    auto done = readRow(**reader, offset, into);
    if (done)
        return done;
    if (const auto memory = kept()) // the row was freed in between
        return MemoryBytes(memory).read(offset, into);
    return done;
}

Result<std::shared_ptr<const Bytes>> RowBytes::readAll() const
{
    if (auto memory = kept())
        return memory;
    return ByteSource::readAll();
}

Result<> RowBytes::keepInMemory(Database &database) const
{
    if (kept())
        return {};
    auto all = std::make_shared<Bytes>(size_);
    if (const auto done = readRow(database, 0, *all); !done)
        return done.error();
    const std::scoped_lock lock(mutex_);
    kept_ = std::move(all);
    return {};
}

} // namespace skyflare
