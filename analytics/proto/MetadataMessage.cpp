#include "analytics/proto/MetadataMessage.h"

#include "analytics/proto/MessageParts.h"

#include <array>

namespace skyflare {

namespace {

struct AppField {
    pb_callback_t APMPBAppData::*field;
    std::string APMAppData::*text;
};

constexpr std::array<AppField, 7> appFields{{
    {&APMPBAppData::app_id, &APMAppData::appId},
    {&APMPBAppData::app_instance_id, &APMAppData::appInstanceId},
    {&APMPBAppData::app_version, &APMAppData::appVersion},
    {&APMPBAppData::platform, &APMAppData::platform},
    {&APMPBAppData::os_version, &APMAppData::osVersion},
    {&APMPBAppData::device_model, &APMAppData::deviceModel},
    {&APMPBAppData::language, &APMAppData::language},
}};

} // namespace

pb_callback_t wire::appDataField(const APMAppData &app)
{
    pb_callback_t field{};
    field.funcs.encode = [](pb_ostream_t *stream, const pb_field_t *tag, void *const *argument) {
        APMPBAppData message = APMPBAppData_init_zero;
        for (const AppField &each : appFields)
            message.*each.field = textField(static_cast<const APMAppData *>(*argument)->*each.text);
        return pb_encode_tag_for_field(stream, tag) &&
               pb_encode_submessage(stream, APMPBAppData_fields, &message);
    };
    field.arg = const_cast<APMAppData *>(&app);
    return field;
}

pb_callback_t wire::appDataInto(APMAppData &app)
{
    pb_callback_t field{};
    field.funcs.decode = [](pb_istream_t *stream, const pb_field_t *, void **argument) {
        APMPBAppData message = APMPBAppData_init_zero;
        for (const AppField &each : appFields)
            message.*each.field = textInto(static_cast<APMAppData *>(*argument)->*each.text);
        return pb_decode(stream, APMPBAppData_fields, &message);
    };
    field.arg = &app;
    return field;
}

Bytes MetadataMessage::encode(const APMMetadata &metadata)
{
    APMPBMetadata message = APMPBMetadata_init_zero;
    message.user_attributes = wire::attributesField(metadata.userAttributes);
    message.app = wire::appDataField(metadata.app);
    return wire::encode(APMPBMetadata_fields, &message);
}

Result<APMMetadata> MetadataMessage::decode(std::span<const std::uint8_t> bytes)
{
    APMMetadata metadata;
    APMPBMetadata message = APMPBMetadata_init_zero;
    message.user_attributes = wire::attributesInto(metadata.userAttributes);
    message.app = wire::appDataInto(metadata.app);
    if (const auto decoded = wire::decode(APMPBMetadata_fields, &message, bytes); !decoded)
        return decoded.error();
    return metadata;
}

std::int64_t MetadataMessage::fingerprint(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint64_t offsetBasis = 0xcbf29ce484222325;
    constexpr std::uint64_t prime = 0x100000001b3;
    std::uint64_t hash = offsetBasis;
    for (const std::uint8_t byte : bytes)
        hash = (hash ^ byte) * prime;
    return static_cast<std::int64_t>(hash);
}

} // namespace skyflare
