#include "analytics/proto/Wire.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace skyflare::wire {

namespace {

bool isPlain(std::string_view text)
{
    return std::ranges::all_of(text, [](char each) { return static_cast<signed char>(each) > 0; });
}

bool writeString(pb_ostream_t *stream, const std::string &text)
{
    return pb_encode_string(stream, reinterpret_cast<const pb_byte_t *>(text.data()), text.size());
}

bool writePresentText(pb_ostream_t *stream, const pb_field_t *field, void *const *argument)
{
    const auto &text = *static_cast<const std::string *>(*argument);
    if (!pb_encode_tag_for_field(stream, field))
        return false;
    return isPlain(text) ? writeString(stream, text) : writeString(stream, validUtf8(text));
}

bool writeText(pb_ostream_t *stream, const pb_field_t *field, void *const *argument)
{
    return static_cast<const std::string *>(*argument)->empty() || writePresentText(stream, field, argument);
}

bool readText(pb_istream_t *stream, std::string &text)
{
    text.resize(stream->bytes_left);
    if (!pb_read(stream, reinterpret_cast<pb_byte_t *>(text.data()), text.size()))
        return false;
    if (!isPlain(text))
        text = validUtf8(text);
    return true;
}

bool writeItems(pb_ostream_t *stream, const pb_field_t *field, void *const *argument);
bool readItems(pb_istream_t *stream, const pb_field_t *field, void **argument);

struct Items {
    const APMValue::Array &items;
    int depth = 0;
};

bool writeParameters(pb_ostream_t *stream, const pb_field_t *field, void *const *argument)
{
    const auto &[parameters, depth] = *static_cast<const Parameters *>(*argument);
    for (const APMParameter &parameter : parameters) {
        APMPBEventParam message = APMPBEventParam_init_zero;
        message.name = textField(parameter.name);
        setValue(message, parameter.value);
        static const APMValue::Array none;
        const auto *array = parameter.value.array();
        Items items{array && depth < deepestArray ? *array : none, depth + 1};
        if (array) {
            message.items_value.funcs.encode = writeItems;
            message.items_value.arg = &items;
        }
        if (!pb_encode_tag_for_field(stream, field) ||
            !pb_encode_submessage(stream, APMPBEventParam_fields, &message))
            return false;
    }
    return true;
}

bool writeItem(pb_ostream_t *stream, const pb_field_t *field, void *const *argument)
{
    const auto &[items, depth] = *static_cast<const Items *>(*argument);
    for (const APMParameters &item : items) {
        const Parameters parameters{item, depth};
        APMPBEventItem message = APMPBEventItem_init_zero;
        message.params = parametersField(parameters);
        if (!pb_encode_tag_for_field(stream, field) ||
            !pb_encode_submessage(stream, APMPBEventItem_fields, &message))
            return false;
    }
    return true;
}

bool writeItems(pb_ostream_t *stream, const pb_field_t *field, void *const *argument)
{
    APMPBEventItems message = APMPBEventItems_init_zero;
    message.items.funcs.encode = writeItem;
    message.items.arg = *argument;
    return pb_encode_tag_for_field(stream, field) &&
           pb_encode_submessage(stream, APMPBEventItems_fields, &message);
}

struct ItemsSink {
    std::optional<APMValue::Array> items;
    int depth = 0;
};

bool readParameter(pb_istream_t *stream, const pb_field_t *, void **argument)
{
    const auto &[parameters, depth] = *static_cast<ParametersSink *>(*argument);
    std::string name;
    std::optional<std::string> text;
    ItemsSink sink{{}, depth + 1};
    APMPBEventParam message = APMPBEventParam_init_zero;
    message.name = textInto(name);
    message.string_value = textInto(text);
    message.items_value.funcs.decode = readItems;
    message.items_value.arg = &sink;
    if (!pb_decode(stream, APMPBEventParam_fields, &message))
        return false;
    auto value = valueOf(message, std::move(text));
    if (sink.items)
        value.emplace(*std::move(sink.items));
    if (value)
        parameters.push_back({std::move(name), *std::move(value)});
    return true;
}

bool readItem(pb_istream_t *stream, const pb_field_t *, void **argument)
{
    auto &sink = *static_cast<ItemsSink *>(*argument);
    ParametersSink parameters{sink.items->emplace_back(), sink.depth};
    APMPBEventItem message = APMPBEventItem_init_zero;
    message.params = parametersInto(parameters);
    return pb_decode(stream, APMPBEventItem_fields, &message);
}

bool readItems(pb_istream_t *stream, const pb_field_t *, void **argument)
{
    auto &sink = *static_cast<ItemsSink *>(*argument);
    sink.items.emplace();
    if (sink.depth > deepestArray)
        return pb_read(stream, nullptr, stream->bytes_left);
    APMPBEventItems message = APMPBEventItems_init_zero;
    message.items.funcs.decode = readItem;
    message.items.arg = &sink;
    return pb_decode(stream, APMPBEventItems_fields, &message);
}

bool append(pb_ostream_t *stream, const pb_byte_t *bytes, std::size_t count)
{
    auto &all = *static_cast<Bytes *>(stream->state);
    all.insert(all.end(), bytes, bytes + count);
    return true;
}

} // namespace

pb_callback_t textField(const std::string &text)
{
    pb_callback_t field{};
    field.funcs.encode = writeText;
    field.arg = const_cast<std::string *>(&text);
    return field;
}

pb_callback_t presentTextField(const std::string &text)
{
    pb_callback_t field = textField(text);
    field.funcs.encode = writePresentText;
    return field;
}

pb_callback_t textInto(std::string &text)
{
    pb_callback_t field{};
    field.funcs.decode = [](pb_istream_t *stream, const pb_field_t *, void **argument) {
        return readText(stream, *static_cast<std::string *>(*argument));
    };
    field.arg = &text;
    return field;
}

pb_callback_t textInto(std::optional<std::string> &text)
{
    pb_callback_t field{};
    field.funcs.decode = [](pb_istream_t *stream, const pb_field_t *, void **argument) {
        return readText(stream, static_cast<std::optional<std::string> *>(*argument)->emplace());
    };
    field.arg = &text;
    return field;
}

pb_callback_t parametersField(const Parameters &parameters)
{
    pb_callback_t field{};
    field.funcs.encode = writeParameters;
    field.arg = const_cast<Parameters *>(&parameters);
    return field;
}

pb_callback_t parametersInto(ParametersSink &sink)
{
    pb_callback_t field{};
    field.funcs.decode = readParameter;
    field.arg = &sink;
    return field;
}

namespace {

std::size_t sizeOfVarint(std::uint64_t value)
{
    return (static_cast<std::size_t>(std::bit_width(value | 1U)) + 6) / 7;
}

void appendVarint(Bytes &message, std::uint64_t value)
{
    for (; value >= 0x80; value >>= 7U)
        message.push_back(static_cast<std::uint8_t>(value | 0x80U));
    message.push_back(static_cast<std::uint8_t>(value));
}

std::uint64_t tagOf(std::uint32_t number)
{
    return std::uint64_t{number} << 3U | PB_WT_STRING;
}

} // namespace

void appendField(Bytes &message, std::uint32_t number, std::span<const std::uint8_t> content)
{
    appendVarint(message, tagOf(number));
    appendVarint(message, content.size());
    message.insert(message.end(), content.begin(), content.end());
}

std::size_t sizeOfField(std::uint32_t number, std::size_t contentSize)
{
    return sizeOfVarint(tagOf(number)) + sizeOfVarint(contentSize) + contentSize;
}

Bytes encode(const pb_msgdesc_t *fields, const void *message)
{
    constexpr std::size_t usualSize = 256;
    Bytes bytes;
    bytes.reserve(usualSize);
    pb_ostream_t stream{append, &bytes, SIZE_MAX, 0, nullptr};
    if (!pb_encode(&stream, fields, message))
        std::abort(); // no callback of ours fails, and the stream takes anything
    return bytes;
}

Error parseError(const pb_istream_t &stream)
{
    return Error{"protobuf", 1, std::string("Unable to parse message: ") + PB_GET_ERROR(&stream)};
}

Result<> decode(const pb_msgdesc_t *fields, void *message, std::span<const std::uint8_t> bytes)
{
    pb_istream_t stream = pb_istream_from_buffer(bytes.data(), bytes.size());
    if (!pb_decode(&stream, fields, message))
        return parseError(stream);
    return {};
}

} // namespace skyflare::wire
