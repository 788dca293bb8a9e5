#include "platform/base/PropertyList.h"

#include "platform/base/Handle.h"
#include "platform/base/Text.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

namespace skyflare {

namespace {

using Node = Handle<void, &plist_free>;
using Iterator = Handle<void, &std::free>;
using CString = Handle<char, &std::free>;
using BinaryText = Handle<char, &plist_to_bin_free>;

constexpr int deepest = 100; ///< levels of nesting that are followed; more is no settings file

Error malformed(std::string message)
{
    return {"property list", 0, std::move(message)};
}

// The library takes a text that stops anywhere behind its last value, and more text behind that.
bool isWholeXml(std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    text = withoutOuterSpace(text);
    return (text.starts_with("<?xml") || text.starts_with("<!DOCTYPE") || text.starts_with("<plist")) &&
           text.ends_with("</plist>");
}

std::uint64_t bigEndian(std::span<const std::uint8_t> bytes)
{
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes)
        number = number << 8 | byte;
    return number;
}

/// Where a list in the binary form has its objects: at `objectCount` offsets, each of `offsetSize` bytes.
struct BinaryLayout {
    std::span<const std::uint8_t> objects; ///< from the start of the list
    std::span<const std::uint8_t> offsets;
    std::size_t offsetSize = 0;
};

// The binary form ends with its table of offsets and 32 bytes that say how large that is: where these do
// not meet the end of the file, something is missing.
std::optional<BinaryLayout> layoutOfWhole(std::span<const std::uint8_t> encoded)
{
    constexpr std::size_t headerSize = 8;
    constexpr std::size_t trailerSize = 32;
    if (encoded.size() < headerSize + trailerSize)
        return {};
    const auto trailer = encoded.last(trailerSize);
    const std::size_t offsetSize = trailer[6];
    const std::uint64_t objectCount = bigEndian(trailer.subspan(8, 8));
    const std::uint64_t tableStart = bigEndian(trailer.subspan(24, 8));
    const std::uint64_t tableEnd = encoded.size() - trailerSize;
    if (offsetSize < 1 || offsetSize > 8 || tableStart < headerSize || tableStart >= tableEnd ||
        (tableEnd - tableStart) / offsetSize != objectCount || (tableEnd - tableStart) % offsetSize != 0)
        return {};
    return BinaryLayout{encoded.first(tableStart), encoded.subspan(tableStart, tableEnd - tableStart),
                        offsetSize};
}

/// Whether the object at `offset` is a text that lies within the list and is free of NUL, or is no text.
bool isSoundText(std::span<const std::uint8_t> objects, std::uint64_t offset)
{
    if (offset >= objects.size())
        return false;
    auto rest = objects.subspan(offset);
    const int kind = rest[0] >> 4; // 5: bytes, 6: pairs of bytes, 7: bytes again
    std::uint64_t length = rest[0] & 0x0FU;
    rest = rest.subspan(1);
    if (kind < 5 || kind > 7)
        return true;
    if (length == 0x0F) { // the length is a number of its own behind that
        const std::size_t size = rest.empty() ? 9 : std::size_t{1} << (rest[0] & 0x0FU);
        if (size > 8 || rest.size() <= size)
            return false;
        length = bigEndian(rest.subspan(1, size));
        rest = rest.subspan(1 + size);
    }
    const std::size_t width = kind == 6 ? 2 : 1;
    if (length > rest.size() / width)
        return false;
    for (std::size_t at = 0; at < length * width; at += width)
        if (bigEndian(rest.subspan(at, width)) == 0)
            return false;
    return true;
}

// The library stops the whole process when a key holds a NUL, so a damaged list is looked over first.
bool isSoundBinary(std::span<const std::uint8_t> encoded)
{
    const auto layout = layoutOfWhole(encoded);
    if (!layout)
        return false;
    for (auto rest = layout->offsets; !rest.empty(); rest = rest.subspan(layout->offsetSize))
        if (!isSoundText(layout->objects, bigEndian(rest.first(layout->offsetSize))))
            return false;
    return true;
}

using Value = PropertyList::Value;

/// Fills `into` from the library's node. False for what a property list of ours does not hold.
bool fromNode(plist_t node, int depth, Value &into);

bool fromArray(plist_t node, int depth, Value &into)
{
    auto &array = into.emplace<PropertyList::Array>();
    for (std::uint32_t index = 0; index < plist_array_get_size(node); ++index) {
        Value &element = array.emplace_back(false).value();
        if (!fromNode(plist_array_get_item(node, index), depth + 1, element))
            return false;
    }
    return true;
}

bool fromDictionary(plist_t node, int depth, Value &into)
{
    auto &dictionary = into.emplace<PropertyList::Dictionary>();
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Iterator iterator(position);
    while (true) {
        char *keyText = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, position, &keyText, &item);
        const CString key(keyText);
        if (!item)
            return true;
        if (!key ||
            !fromNode(item, depth + 1, dictionary.try_emplace(key.get(), false).first->second.value()))
            return false;
    }
}

bool fromScalar(plist_t node, Value &into)
{
    std::uint64_t length = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t isTrue = 0;
        plist_get_bool_val(node, &isTrue);
        into.emplace<bool>(isTrue != 0);
        return true;
    }
    case PLIST_UINT: {
        std::uint64_t bits = 0; // of a signed number
        plist_get_uint_val(node, &bits);
        into.emplace<std::int64_t>(static_cast<std::int64_t>(bits));
        return true;
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        into.emplace<double>(number);
        return true;
    }
    case PLIST_STRING: {
        const char *text = plist_get_string_ptr(node, &length);
        into.emplace<std::string>(text ? text : "", length);
        return true;
    }
    case PLIST_DATA: {
        const char *data = plist_get_data_ptr(node, &length);
        into.emplace<Bytes>(data, data + length);
        return true;
    }
    default: // a date or a reference
        return false;
    }
}

bool fromNode(plist_t node, int depth, Value &into)
{
    if (!node || depth > deepest)
        return false;
    switch (plist_get_node_type(node)) {
    case PLIST_ARRAY:
        return fromArray(node, depth, into);
    case PLIST_DICT:
        return fromDictionary(node, depth, into);
    default:
        return fromScalar(node, into);
    }
}

/// Makes the library's node for each kind of value. Containers take over what is put into them.
struct NodeMaker {
    Node operator()(bool value) const { return Node(plist_new_bool(value ? 1 : 0)); }
    Node operator()(std::int64_t value) const
    {
        return Node(plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    Node operator()(double value) const { return Node(plist_new_real(value)); }
    Node operator()(const std::string &value) const
    {
        return Node(plist_new_string(validUtf8(value).c_str()));
    }
    Node operator()(const Bytes &value) const
    {
        const std::string_view text(value.empty() ? "" : reinterpret_cast<const char *>(value.data()),
                                    value.size());
        return Node(plist_new_data(text.data(), text.size()));
    }
    Node operator()(const PropertyList::Array &value) const
    {
        Node array(plist_new_array());
        for (const PropertyList &element : value)
            plist_array_append_item(array.get(), std::visit(*this, element.value()).release());
        return array;
    }
    Node operator()(const PropertyList::Dictionary &value) const
    {
        Node dictionary(plist_new_dict());
        for (const auto &[key, element] : value)
            plist_dict_set_item(dictionary.get(), validUtf8(key).c_str(),
                                std::visit(*this, element.value()).release());
        return dictionary;
    }
};

} // namespace

Result<PropertyList> PropertyList::parse(std::span<const std::uint8_t> encoded)
{
    const std::string_view text(reinterpret_cast<const char *>(encoded.data()), encoded.size());
    if (text.size() > std::numeric_limits<std::int32_t>::max())
        return malformed("too large for a property list");
    const bool binary = text.starts_with("bplist00");
    if (!(binary ? isSoundBinary(encoded) : isWholeXml(text)))
        return malformed(binary ? "cut short or damaged" : "not a whole property list");

    plist_t parsed = nullptr;
    const auto size = static_cast<std::uint32_t>(text.size());
    if (binary)
        plist_from_bin(text.data(), size, &parsed);
    else
        plist_from_xml(text.data(), size, &parsed);
    const Node node(parsed);
    if (!node)
        return malformed("not a property list");
    PropertyList list(false);
    if (!fromNode(node.get(), 0, list.value()))
        return malformed("holds a value of a kind that is not supported");
    return list;
}

Bytes PropertyList::serialize() const
{
    const Node node = std::visit(NodeMaker{}, value_);
    char *encoded = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node.get(), &encoded, &size);
    const BinaryText owner(encoded);
    return encoded ? Bytes(encoded, encoded + size) : Bytes();
}

} // namespace skyflare
