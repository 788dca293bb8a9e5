#include "analytics/proto/BundleMessage.h"

#include "analytics/proto/MessageParts.h"

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

Bytes BundleMessage::encode(const APMMeasurementBundle &bundle)
{
    APMPBMeasurementBundle message = APMPBMeasurementBundle_init_zero;
    message.app_id = wire::textField(bundle.appId);
    message.index = bundle.index;
    message.start_timestamp = bundle.startTimestamp;
    message.end_timestamp = bundle.endTimestamp;
    message.previous_end_timestamp = bundle.previousEndTimestamp;
    message.events = wire::messagesField<std::vector<APMEvent>, wire::writeEvent>(bundle.events);
    message.user_attributes = wire::attributesField(bundle.metadata.userAttributes);
    message.app = wire::appDataField(bundle.metadata.app);
    message.database_id = wire::textField(bundle.databaseId);
    return wire::encode(APMPBMeasurementBundle_fields, &message);
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
