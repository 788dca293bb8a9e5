#include "analytics/proto/BatchMessage.h"

#include "analytics/proto/MessageParts.h"

namespace skyflare {

namespace {

bool writeEncoded(pb_ostream_t *stream, const Bytes &message)
{
    return pb_encode_string(stream, message.data(), message.size());
}

/// Goes through the fields of a message. @param visit  reads the field that has that number, or skips it
template <typename Visit> bool visitFields(pb_istream_t *stream, const Visit &visit)
{
    for (;;) {
        pb_wire_type_t type{};
        std::uint32_t number = 0;
        bool isAtEnd = false;
        if (!pb_decode_tag(stream, &type, &number, &isAtEnd))
            return isAtEnd;
        if (!visit(number, type))
            return false;
    }
}

bool countEvents(pb_istream_t *stream, std::size_t &count)
{
    return visitFields(stream, [&](std::uint32_t number, pb_wire_type_t type) {
        count += number == APMPBMeasurementBundle_events_tag ? 1 : 0;
        return pb_skip_field(stream, type);
    });
}

} // namespace

Bytes BatchMessage::encode(const APMBatchFacts &facts, const std::vector<Bytes> &bundles)
{
    APMPBMeasurementBatch message = APMPBMeasurementBatch_init_zero;
    message.bundles = wire::messagesField<std::vector<Bytes>, writeEncoded>(bundles);
    message.upload_timestamp = facts.uploadTimestamp;
    message.engine_version = wire::textField(facts.engineVersion);
    message.debug = facts.isDebug;
    return wire::encode(APMPBMeasurementBatch_fields, &message);
}

std::size_t BatchMessage::sizeOfBundle(std::size_t bytes)
{
    return wire::sizeOfField(APMPBMeasurementBatch_bundles_tag, bytes);
}

Result<APMMeasurementBatch> BatchMessage::decode(std::span<const std::uint8_t> bytes)
{
    APMMeasurementBatch batch;
    APMPBMeasurementBatch message = APMPBMeasurementBatch_init_zero;
    message.bundles = wire::messagesInto<std::vector<APMMeasurementBundle>, wire::readBundle>(batch.bundles);
    message.engine_version = wire::textInto(batch.facts.engineVersion);
    if (const auto decoded = wire::decode(APMPBMeasurementBatch_fields, &message, bytes); !decoded)
        return decoded.error();
    batch.facts.uploadTimestamp = message.upload_timestamp;
    batch.facts.isDebug = message.debug;
    return batch;
}

Result<BatchMessage::Counts> BatchMessage::count(std::span<const std::uint8_t> bytes)
{
    Counts counts;
    pb_istream_t batch = pb_istream_from_buffer(bytes.data(), bytes.size());
    const bool isRead = visitFields(&batch, [&](std::uint32_t number, pb_wire_type_t type) {
        const bool isBundle = number == APMPBMeasurementBatch_bundles_tag;
        counts.bundles += isBundle ? 1 : 0;
        if (!isBundle || type != PB_WT_STRING)
            return pb_skip_field(&batch, type);
        pb_istream_t bundle{};
        if (!pb_make_string_substream(&batch, &bundle))
            return false;
        const bool isCounted = countEvents(&bundle, counts.events);
        return pb_close_string_substream(&batch, &bundle) && isCounted;
    });
    if (!isRead)
        return wire::parseError(batch);
    return counts;
}

} // namespace skyflare
