#include "analytics/proto/UserAttributeMessage.h"

#include "analytics/proto/MessageParts.h"

namespace skyflare {

namespace wire {

APMPBUserAttribute attributeMessage(const APMUserAttribute &attribute)
{
    APMPBUserAttribute message = APMPBUserAttribute_init_zero;
    message.name = textField(attribute.name);
    setValue(message, attribute.value);
    message.set_timestamp = attribute.setTimestamp;
    message.origin = textField(attribute.origin);
    return message;
}

bool writeAttribute(pb_ostream_t *stream, const APMUserAttribute &attribute)
{
    const APMPBUserAttribute message = attributeMessage(attribute);
    return pb_encode_submessage(stream, APMPBUserAttribute_fields, &message);
}

bool readAttribute(pb_istream_t *stream, std::optional<APMUserAttribute> &attribute)
{
    std::string name;
    std::string origin;
    std::optional<std::string> text;
    APMPBUserAttribute message = APMPBUserAttribute_init_zero;
    message.name = textInto(name);
    message.string_value = textInto(text);
    message.origin = textInto(origin);
    if (!pb_decode(stream, APMPBUserAttribute_fields, &message))
        return false;
    if (auto value = valueOf(message, std::move(text)))
        attribute = {std::move(name), std::move(origin), message.set_timestamp, *std::move(value)};
    return true;
}

pb_callback_t attributesInto(std::vector<APMUserAttribute> &attributes)
{
    pb_callback_t field{};
    field.funcs.decode = [](pb_istream_t *stream, const pb_field_t *, void **argument) {
        std::optional<APMUserAttribute> attribute;
        if (!readAttribute(stream, attribute))
            return false;
        if (attribute)
            static_cast<std::vector<APMUserAttribute> *>(*argument)->push_back(*std::move(attribute));
        return true;
    };
    field.arg = &attributes;
    return field;
}

pb_callback_t attributesField(const std::vector<APMUserAttribute> &attributes)
{
    return messagesField<std::vector<APMUserAttribute>, writeAttribute>(attributes);
}

} // namespace wire

Bytes UserAttributeMessage::encode(const APMUserAttribute &attribute)
{
    const APMPBUserAttribute message = wire::attributeMessage(attribute);
    return wire::encode(APMPBUserAttribute_fields, &message);
}

Result<APMUserAttribute> UserAttributeMessage::decode(std::span<const std::uint8_t> bytes)
{
    std::optional<APMUserAttribute> attribute;
    pb_istream_t stream = pb_istream_from_buffer(bytes.data(), bytes.size());
    if (!wire::readAttribute(&stream, attribute))
        return wire::parseError(stream);
    if (!attribute)
        return Error{"protobuf", 2, "User attribute has no value"};
    return *std::move(attribute);
}

Bytes UserAttributeMessage::encodeValue(const APMValue &value)
{
    APMPBUserAttribute message = APMPBUserAttribute_init_zero;
    wire::setValue(message, value);
    return wire::encode(APMPBUserAttribute_fields, &message);
}

Result<APMValue> UserAttributeMessage::decodeValue(std::span<const std::uint8_t> bytes)
{
    auto attribute = decode(bytes);
    if (!attribute)
        return attribute.error();
    return std::move(attribute->value);
}

} // namespace skyflare
