// Any bytes as what the measurement database holds: events, metadata, properties of the user, bundles; and as
// what a collector is sent.
#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/BundleMessage.h"
#include "analytics/proto/EventCheck.h"
#include "analytics/proto/EventMessage.h"
#include "analytics/proto/MetadataMessage.h"
#include "analytics/proto/UserAttributeMessage.h"
#include "fuzz/Checks.h"

using namespace skyflare;

namespace {

/// What could be read is written, read again and written the same.
template <typename Message> auto check(std::span<const std::uint8_t> bytes)
{
    auto first = Message::decode(bytes);
    if (!first)
        return first;
    const Bytes written = Message::encode(*first);
    const auto second = Message::decode(written);
    require(second.has_value(), "what was written can be read");
    require(Message::encode(*second) == written, "and is written the same again");
    return first;
}

/// What is counted beforehand is what is read.
void checkBatch(std::span<const std::uint8_t> bytes)
{
    const auto batch = BatchMessage::decode(bytes);
    const auto counts = BatchMessage::count(bytes);
    if (!batch || !counts)
        return;
    std::size_t events = 0;
    for (const APMMeasurementBundle &bundle : batch->bundles)
        events += bundle.events.size();
    require(counts->bundles == batch->bundles.size() && counts->events == events,
            "every bundle and every event that is read was counted");
}

/// A row that may go into a bundle as it is can be read there; what a queue is told of a bundle is what is in
/// it.
void checkBundling(std::span<const std::uint8_t> bytes)
{
    APMMeasurementBundle frame;
    frame.appId = "1:2";
    frame.endTimestamp = 2.5;
    Bytes events;
    const bool isSound = isSoundEvent(bytes);
    if (isSound)
        BundleMessage::appendEvent(events, bytes);
    require(!isSound || EventMessage::decode(bytes).has_value(), "a sound event can be read");
    const Bytes message = BundleMessage::encode(frame, events);
    require(message.size() == BundleMessage::encode(frame, {}).size() +
                                  (isSound ? BundleMessage::sizeOfEvent(bytes.size()) : 0),
            "the size of an event is known beforehand");
    const auto bundle = BundleMessage::decode(message);
    const auto head = BundleMessage::head(message);
    require(bundle && head && head->events == bundle->events.size() && head->appId == "1:2" &&
                head->endTimestamp == 2.5,
            "a bundle's head says what is in it");
    const auto any = BundleMessage::decode(bytes);
    const auto anyHead = BundleMessage::head(bytes);
    if (any && anyHead)
        require(anyHead->events == any->events.size(), "every event that is read was counted");
}

/// As a caller may give it: texts that are no UTF-8.
void checkText(std::string text)
{
    const APMEvent event{
        text,
        text,
        1,
        0,
        {{text, APMValue(text)}, {"items", APMValue(APMValue::Array{{{text, APMValue(text)}}})}}};
    const auto read = EventMessage::decode(EventMessage::encode(event));
    require(read.has_value(), "an event with any text can be read");
    require(read->name == validUtf8(text), "its name is the text as UTF-8");
    require(read->parameters.size() == 2 && *read->parameters[0].value.text() == validUtf8(text),
            "its values are the text as UTF-8");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::span bytes(data, size);
    if (const auto event = check<EventMessage>(bytes))
        require(validUtf8(event->name) == event->name, "a name that was read is UTF-8");
    (void)check<MetadataMessage>(bytes);
    (void)check<UserAttributeMessage>(bytes);
    (void)check<BundleMessage>(bytes);
    checkBatch(bytes);
    checkBundling(bytes);
    checkText(std::string(bytes.begin(), bytes.end()));
    return 0;
}
