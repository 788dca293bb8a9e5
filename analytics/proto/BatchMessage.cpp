#include "analytics/proto/BatchMessage.h"

#include "analytics/proto/BundleMessage.h"
#include "analytics/proto/FieldReader.h"
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
    FieldReader reader(bytes);
    while (const auto field = reader.next()) {
        if (field->number != APMPBMeasurementBatch_bundles_tag)
            continue;
        if (field->type != WireType::Length)
            return FieldReader::error();
        const auto bundle = BundleMessage::head(field->content);
        if (!bundle)
            return bundle.error();
        ++counts.bundles;
        counts.events += bundle->events;
    }
    if (!reader.isAtEnd())
        return FieldReader::error();
    return counts;
}

} // namespace skyflare
