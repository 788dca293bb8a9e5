#pragma once

#include "analytics/model/APMValue.h"
#include "platform/base/Bytes.h"

#include <measurement.pb.h>
#include <pb_decode.h>
#include <pb_encode.h>

#include <optional>
#include <string>

/// What the messages of this folder share: fields that nanopb writes and reads by callback.
///
/// Threads: any; nothing is kept. What a field is made from must outlive the message that holds it.
namespace skyflare::wire {

/// Arrays within arrays are written and read to this depth, deeper ones as empty. The engine records no array
/// within another.
inline constexpr int deepestArray = 4;

/// A text to be written, as UTF-8; left out when it is empty.
pb_callback_t textField(const std::string &text);
/// The same, written even when it is empty.
pb_callback_t presentTextField(const std::string &text);
/// A text to be read.
pb_callback_t textInto(std::string &text);
/// The same, for a field whose presence counts.
pb_callback_t textInto(std::optional<std::string> &text);

struct Parameters {
    const APMParameters &parameters;
    int depth = 0; ///< of the array that they stand in
};
pb_callback_t parametersField(const Parameters &parameters);

struct ParametersSink {
    APMParameters &parameters;
    int depth = 0;
};
pb_callback_t parametersInto(ParametersSink &sink);

/// A field whose values are messages, from a range of what they are made from.
/// @param Write  bool(pb_ostream_t *, const Range::value_type &): writes one with its length
template <typename Range, auto Write> pb_callback_t messagesField(const Range &range)
{
    pb_callback_t field{};
    field.funcs.encode = [](pb_ostream_t *stream, const pb_field_t *tag, void *const *argument) {
        for (const auto &each : *static_cast<const Range *>(*argument)) {
            if (!pb_encode_tag_for_field(stream, tag) || !Write(stream, each))
                return false;
        }
        return true;
    };
    field.arg = const_cast<Range *>(&range);
    return field;
}

/// @param Read  bool(pb_istream_t *, Range::value_type &): reads one, whose end is the stream's
template <typename Range, auto Read> pb_callback_t messagesInto(Range &range)
{
    pb_callback_t field{};
    field.funcs.decode = [](pb_istream_t *stream, const pb_field_t *, void **argument) {
        return Read(stream, static_cast<Range *>(*argument)->emplace_back());
    };
    field.arg = &range;
    return field;
}

/// What is in a value that is no array, into a message that has the three fields for it.
template <typename Message> void setValue(Message &message, const APMValue &value)
{
    if (const auto *text = value.text())
        message.string_value = presentTextField(*text);
    else if (const auto *integer = value.integer()) {
        message.has_int_value = true;
        message.int_value = *integer;
    } else if (const auto *real = value.real()) {
        message.has_double_value = true;
        message.double_value = *real;
    }
}

/// Nothing where the message has no value, or one of a kind that is not known yet.
template <typename Message>
std::optional<APMValue> valueOf(const Message &message, std::optional<std::string> text)
{
    // Deliberate: made in place; gcc 12 sees something uninitialised in a temporary under the sanitizers.
    std::optional<APMValue> value;
    if (text)
        value.emplace(*std::move(text));
    else if (message.has_int_value)
        value.emplace(std::int64_t{message.int_value});
    else if (message.has_double_value)
        value.emplace(message.double_value);
    return value;
}

/// A field whose content is encoded already.
void appendField(Bytes &message, std::uint32_t number, std::span<const std::uint8_t> content);
std::size_t sizeOfField(std::uint32_t number, std::size_t contentSize);

/// The message as bytes. There is nothing in ours that could not be written.
Bytes encode(const pb_msgdesc_t *fields, const void *message);
Error parseError(const pb_istream_t &stream);
Result<> decode(const pb_msgdesc_t *fields, void *message, std::span<const std::uint8_t> bytes);

} // namespace skyflare::wire
