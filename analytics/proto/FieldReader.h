#pragma once

#include "platform/base/Result.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace skyflare {

/// How the value of a field is written.
enum class WireType : std::uint8_t { Varint = 0, Fixed64 = 1, Length = 2, Fixed32 = 5 };

/// One field of a message, where it lies.
///
/// Threads: any; a value.
struct WireField {
    std::uint32_t number = 0;
    WireType type = WireType::Varint;
    std::uint64_t value = 0;                    ///< of Varint and Fixed64
    std::span<const std::uint8_t> content = {}; ///< of Length

    [[nodiscard]] std::string_view text() const
    {
        return {reinterpret_cast<const char *>(content.data()), content.size()};
    }
};

/// Goes through the fields of a message without copying or allocating anything. Any bytes may be read.
///
/// Threads: one. Borrows the bytes.
class FieldReader {
public:
    explicit FieldReader(std::span<const std::uint8_t> message) : rest_(message) {}

    /// Nothing: the message has ended, or what follows is no field.
    std::optional<WireField> next();
    /// After next() had nothing: whether that was the end.
    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }
    /// For who needs a message to its end.
    [[nodiscard]] static Error error()
    {
        return {"protobuf", 3, "Unable to parse message: what follows is no field"};
    }

private:
    std::span<const std::uint8_t> rest_;

    bool readVarint(std::uint64_t &value);
    bool readValue(WireField &field);
    std::optional<std::span<const std::uint8_t>> take(std::uint64_t size);
};

} // namespace skyflare
