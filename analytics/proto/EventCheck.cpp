#include "analytics/proto/EventCheck.h"

#include "analytics/proto/FieldReader.h"
#include "analytics/proto/Wire.h"
#include "platform/base/Text.h"

#include <array>

namespace skyflare {

namespace {

enum class Shape { None, Event, Param, Items, Item };

/// A field that is known: what is not in the table may be anything, as a later version has it.
struct KnownField {
    Shape message;
    std::uint32_t number;
    WireType type;
    Shape inner = Shape::None; ///< none: of Length it is a text
};

constexpr std::array knownFields{
    KnownField{Shape::Event, APMPBEvent_name_tag, WireType::Length},
    KnownField{Shape::Event, APMPBEvent_params_tag, WireType::Length, Shape::Param},
    KnownField{Shape::Event, APMPBEvent_timestamp_tag, WireType::Fixed64},
    KnownField{Shape::Event, APMPBEvent_previous_timestamp_tag, WireType::Fixed64},
    KnownField{Shape::Event, APMPBEvent_count_tag, WireType::Varint},
    KnownField{Shape::Event, APMPBEvent_origin_tag, WireType::Length},
    KnownField{Shape::Param, APMPBEventParam_name_tag, WireType::Length},
    KnownField{Shape::Param, APMPBEventParam_string_value_tag, WireType::Length},
    KnownField{Shape::Param, APMPBEventParam_int_value_tag, WireType::Varint},
    KnownField{Shape::Param, APMPBEventParam_double_value_tag, WireType::Fixed64},
    KnownField{Shape::Param, APMPBEventParam_items_value_tag, WireType::Length, Shape::Items},
    KnownField{Shape::Items, APMPBEventItems_items_tag, WireType::Length, Shape::Item},
    KnownField{Shape::Item, APMPBEventItem_params_tag, WireType::Length, Shape::Param},
};

/// How many messages within one another the deepest event that is written has below itself: three for each
/// array, and a parameter with an empty one. Decoders follow far deeper.
constexpr int deepest = 3 * wire::deepestArray + 2;

const KnownField *knownField(Shape message, std::uint32_t number)
{
    for (const KnownField &field : knownFields) {
        if (field.message == message && field.number == number)
            return &field;
    }
    return nullptr;
}

bool isSound(Shape shape, std::span<const std::uint8_t> message, int depth)
{
    FieldReader reader(message);
    while (const auto field = reader.next()) {
        const KnownField *const known = knownField(shape, field->number);
        if (!known)
            continue;
        if (field->type != known->type)
            return false;
        if (known->type != WireType::Length)
            continue;
        const bool isSoundInside = known->inner == Shape::None
                                       ? isValidUtf8(field->text())
                                       : depth < deepest && isSound(known->inner, field->content, depth + 1);
        if (!isSoundInside)
            return false;
    }
    return reader.isAtEnd();
}

/// The last one counts.
bool hasName(std::span<const std::uint8_t> message)
{
    bool isNamed = false;
    FieldReader reader(message);
    while (const auto field = reader.next()) {
        if (field->number == APMPBEvent_name_tag)
            isNamed = !field->content.empty();
    }
    return isNamed;
}

} // namespace

bool isSoundEvent(std::span<const std::uint8_t> message)
{
    return isSound(Shape::Event, message, 0) && hasName(message);
}

} // namespace skyflare
