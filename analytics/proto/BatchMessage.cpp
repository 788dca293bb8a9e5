#include "analytics/proto/BatchMessage.h"

#include "analytics/proto/MessageParts.h"

namespace skyflare {

namespace {

bool writeEncoded(pb_ostream_t *stream, const Bytes &message)
{
    return pb_encode_string(stream, message.data(), message.size());
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

} // namespace skyflare
