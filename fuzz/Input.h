#pragma once

#include "platform/base/PropertyList.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace skyflare {

/// A fuzzer's bytes as a row of fields: the lowest bits of a byte say of which kind a value is, the next byte
/// how long it is.
///
/// Threads: one. Borrows the bytes.
class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) : rest_(reinterpret_cast<const char *>(data), size) {}

    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }
    std::uint8_t byte()
    {
        if (rest_.empty())
            return 0;
        const auto first = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }
    /// The byte before it says how long it is; it is repeated, so that the limits are in reach.
    std::string text(int repeated = 1)
    {
        const std::size_t size = std::min<std::size_t>(byte(), rest_.size());
        const std::string once(rest_.substr(0, size));
        rest_.remove_prefix(size);
        std::string result;
        for (int i = 0; i < repeated; ++i)
            result += once;
        return result;
    }
    PropertyList value(int depth = 0)
    {
        const int kind = byte();
        switch (kind & 7) {
        case 0:
            return (kind & 8) != 0;
        case 1:
            return std::int64_t{kind};
        case 2:
            return static_cast<double>(kind) / 7;
        case 3:
            return Bytes(2);
        case 4:
            return depth < 4 ? PropertyList(dictionary(kind >> 3, depth + 1)) : PropertyList(false);
        case 5: {
            PropertyList::Array array;
            for (int i = kind >> 3; i > 0 && depth < 4 && !isAtEnd(); --i)
                array.push_back(value(depth + 1));
            return array;
        }
        default:
            return text(kind >> 3);
        }
    }
    PropertyList::Dictionary dictionary(int most, int depth)
    {
        PropertyList::Dictionary result;
        for (; most > 0 && !isAtEnd(); --most) {
            std::string key = text();
            result.insert_or_assign(std::move(key), value(depth));
        }
        return result;
    }

private:
    std::string_view rest_;
};

} // namespace skyflare
