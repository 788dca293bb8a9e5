#pragma once

#include "analytics/model/APMEvent.h"
#include "analytics/model/APMUserAttribute.h"
#include "analytics/proto/APMMeasurementBundle.h"
#include "analytics/proto/Wire.h"

/// The messages of this folder as parts of others. Threads: any.
namespace skyflare::wire {

/// Gives the filled-in message to `use`, as long as what it refers to is there.
template <typename Use> auto withEventMessage(const APMEvent &event, const Use &use)
{
    const Parameters parameters{event.parameters};
    APMPBEvent message = APMPBEvent_init_zero;
    message.name = textField(event.name);
    message.params = parametersField(parameters);
    message.timestamp = event.timestamp;
    message.previous_timestamp = event.previousTimestamp;
    message.count = 1;
    message.origin = textField(event.origin);
    return use(message);
}

bool writeEvent(pb_ostream_t *stream, const APMEvent &event);
bool readEvent(pb_istream_t *stream, APMEvent &event);

bool readBundle(pb_istream_t *stream, APMMeasurementBundle &bundle);

APMPBUserAttribute attributeMessage(const APMUserAttribute &attribute);
bool writeAttribute(pb_ostream_t *stream, const APMUserAttribute &attribute);
/// An attribute, or none where it has no value that is known.
bool readAttribute(pb_istream_t *stream, std::optional<APMUserAttribute> &attribute);
/// Adds to `attributes` those that have a value.
pb_callback_t attributesInto(std::vector<APMUserAttribute> &attributes);
pb_callback_t attributesField(const std::vector<APMUserAttribute> &attributes);

pb_callback_t appDataField(const APMAppData &app);
pb_callback_t appDataInto(APMAppData &app);

} // namespace skyflare::wire
