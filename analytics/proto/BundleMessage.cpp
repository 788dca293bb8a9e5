#include "analytics/proto/BundleMessage.h"

#include "analytics/proto/FieldReader.h"
#include "analytics/proto/MessageParts.h"

#include <bit>

namespace skyflare {

bool wire::readBundle(pb_istream_t *stream, APMMeasurementBundle &bundle)
{
    APMPBMeasurementBundle message = APMPBMeasurementBundle_init_zero;
    message.app_id = textInto(bundle.appId);
    message.events = messagesInto<std::vector<APMEvent>, readEvent>(bundle.events);
    message.user_attributes = attributesInto(bundle.metadata.userAttributes);
    message.app = appDataInto(bundle.metadata.app);
    message.database_id = textInto(bundle.databaseId);
    if (!pb_decode(stream, APMPBMeasurementBundle_fields, &message))
        return false;
    bundle.index = message.index;
    bundle.startTimestamp = message.start_timestamp;
    bundle.endTimestamp = message.end_timestamp;
    bundle.previousEndTimestamp = message.previous_end_timestamp;
    return true;
}

namespace {

using EncodedEvents = std::span<const std::uint8_t>;

pb_callback_t encodedField(const EncodedEvents &events)
{
    pb_callback_t field{};
    field.funcs.encode = [](pb_ostream_t *stream, const pb_field_t *, void *const *argument) {
        const auto &bytes = *static_cast<const EncodedEvents *>(*argument);
        return pb_write(stream, bytes.data(), bytes.size());
    };
    field.arg = const_cast<EncodedEvents *>(&events);
    return field;
}

Bytes encodeWith(const pb_callback_t &events, const APMMeasurementBundle &bundle)
{
    APMPBMeasurementBundle message = APMPBMeasurementBundle_init_zero;
    message.app_id = wire::textField(bundle.appId);
    message.index = bundle.index;
    message.start_timestamp = bundle.startTimestamp;
    message.end_timestamp = bundle.endTimestamp;
    message.previous_end_timestamp = bundle.previousEndTimestamp;
    message.events = events;
    message.user_attributes = wire::attributesField(bundle.metadata.userAttributes);
    message.app = wire::appDataField(bundle.metadata.app);
    message.database_id = wire::textField(bundle.databaseId);
    return wire::encode(APMPBMeasurementBundle_fields, &message);
}

} // namespace

Bytes BundleMessage::encode(const APMMeasurementBundle &bundle)
{
    return encodeWith(wire::messagesField<std::vector<APMEvent>, wire::writeEvent>(bundle.events), bundle);
}

Bytes BundleMessage::encode(const APMMeasurementBundle &bundle, std::span<const std::uint8_t> events)
{
    return encodeWith(encodedField(events), bundle);
}

void BundleMessage::appendEvent(Bytes &events, std::span<const std::uint8_t> event)
{
    wire::appendField(events, APMPBMeasurementBundle_events_tag, event);
}

std::size_t BundleMessage::sizeOfEvent(std::size_t bytes)
{
    return wire::sizeOfField(APMPBMeasurementBundle_events_tag, bytes);
}

Result<BundleMessage::Head> BundleMessage::head(std::span<const std::uint8_t> bytes)
{
    Head head;
    FieldReader reader(bytes);
    while (const auto field = reader.next()) {
        if (field->number == APMPBMeasurementBundle_app_id_tag && field->type == WireType::Length)
            head.appId = field->text();
        else if (field->number == APMPBMeasurementBundle_end_timestamp_tag &&
                 field->type == WireType::Fixed64)
            head.endTimestamp = std::bit_cast<double>(field->value);
        else if (field->number == APMPBMeasurementBundle_events_tag)
            ++head.events; // of whatever type: decode() tries each
    }
    if (!reader.isAtEnd())
        return FieldReader::error();
    return head;
}

Result<APMMeasurementBundle> BundleMessage::decode(std::span<const std::uint8_t> bytes)
{
    APMMeasurementBundle bundle;
    pb_istream_t stream = pb_istream_from_buffer(bytes.data(), bytes.size());
    if (!wire::readBundle(&stream, bundle))
        return wire::parseError(stream);
    return bundle;
}

} // namespace skyflare
