#include "analytics/proto/FieldReader.h"

namespace skyflare {

std::optional<WireField> FieldReader::next()
{
    const auto before = rest_;
    std::uint64_t tag = 0;
    WireField field;
    if (!rest_.empty() && readVarint(tag) && tag >> 3U > 0 && tag <= UINT32_MAX) {
        field.number = static_cast<std::uint32_t>(tag >> 3U);
        field.type = static_cast<WireType>(tag & 7U);
        if (readValue(field))
            return field;
    }
    rest_ = before;
    return {};
}

bool FieldReader::readValue(WireField &field)
{
    switch (field.type) {
    case WireType::Varint:
        return readVarint(field.value);
    case WireType::Fixed64: {
        const auto bytes = take(sizeof field.value);
        for (std::size_t at = 0; bytes && at < sizeof field.value; ++at)
            field.value |= std::uint64_t{(*bytes)[at]} << (8 * at);
        return bytes.has_value();
    }
    case WireType::Length: {
        std::uint64_t length = 0;
        const auto bytes = readVarint(length) ? take(length) : std::nullopt;
        field.content = bytes.value_or(field.content);
        return bytes.has_value();
    }
    case WireType::Fixed32:
        return take(sizeof(std::uint32_t)).has_value();
    }
    return false; // a group, or none
}

/// Seven bits a byte, the lowest first.
bool FieldReader::readVarint(std::uint64_t &value)
{
    constexpr unsigned bits = 64;
    value = 0;
    std::size_t size = 0;
    for (unsigned shift = 0; shift < bits && size < rest_.size(); shift += 7) {
        const std::uint64_t byte = rest_[size++];
        const std::uint64_t part = byte & 0x7FU;
        if (part << shift >> shift != part)
            return false; // more than 64 bits
        value |= part << shift;
        if (byte < 0x80) {
            rest_ = rest_.subspan(size);
            return true;
        }
    }
    return false;
}

std::optional<std::span<const std::uint8_t>> FieldReader::take(std::uint64_t size)
{
    if (size > rest_.size())
        return {};
    const auto taken = rest_.first(static_cast<std::size_t>(size));
    rest_ = rest_.subspan(taken.size());
    return taken;
}

} // namespace skyflare
