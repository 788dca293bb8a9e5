#include "analytics/proto/EventMessage.h"

#include "analytics/proto/MessageParts.h"

namespace skyflare {

bool wire::writeEvent(pb_ostream_t *stream, const APMEvent &event)
{
    return withEventMessage(event, [stream](const APMPBEvent &message) {
        return pb_encode_submessage(stream, APMPBEvent_fields, &message);
    });
}

bool wire::readEvent(pb_istream_t *stream, APMEvent &event)
{
    ParametersSink sink{event.parameters};
    APMPBEvent message = APMPBEvent_init_zero;
    message.name = textInto(event.name);
    message.params = parametersInto(sink);
    message.origin = textInto(event.origin);
    if (!pb_decode(stream, APMPBEvent_fields, &message))
        return false;
    event.timestamp = message.timestamp;
    event.previousTimestamp = message.previous_timestamp;
    return true;
}

Bytes EventMessage::encode(const APMEvent &event)
{
    return wire::withEventMessage(
        event, [](const APMPBEvent &message) { return wire::encode(APMPBEvent_fields, &message); });
}

Result<APMEvent> EventMessage::decode(std::span<const std::uint8_t> bytes)
{
    APMEvent event;
    pb_istream_t stream = pb_istream_from_buffer(bytes.data(), bytes.size());
    if (!wire::readEvent(&stream, event))
        return wire::parseError(stream);
    return event;
}

} // namespace skyflare
