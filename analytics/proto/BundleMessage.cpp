#include "analytics/proto/BundleMessage.h"

#include "analytics/proto/MessageParts.h"

namespace skyflare {

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
    return wire::encode(APMPBMeasurementBundle_fields, &message);
}

Result<APMMeasurementBundle> BundleMessage::decode(std::span<const std::uint8_t> bytes)
{
    APMMeasurementBundle bundle;
    APMPBMeasurementBundle message = APMPBMeasurementBundle_init_zero;
    message.app_id = wire::textInto(bundle.appId);
    message.events = wire::messagesInto<std::vector<APMEvent>, wire::readEvent>(bundle.events);
    message.user_attributes = wire::attributesInto(bundle.metadata.userAttributes);
    message.app = wire::appDataInto(bundle.metadata.app);
    if (const auto decoded = wire::decode(APMPBMeasurementBundle_fields, &message, bytes); !decoded)
        return decoded.error();
    bundle.index = message.index;
    bundle.startTimestamp = message.start_timestamp;
    bundle.endTimestamp = message.end_timestamp;
    bundle.previousEndTimestamp = message.previous_end_timestamp;
    return bundle;
}

} // namespace skyflare
