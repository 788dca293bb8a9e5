#include "collector/BatchCheck.h"

#include "analytics/proto/BatchMessage.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace skyflare {

namespace {

constexpr std::size_t mostBundles = 10'000; // the most that an engine can be set to
constexpr std::size_t mostEvents = 400'000; // a batch may have 10 MiB, an event has 26 bytes and more
constexpr std::size_t mostRepeatedBytes = std::size_t{256} << 20U;
constexpr std::size_t longestIdentifier = 256;
constexpr std::int64_t greatestIndex = std::int64_t{1} << 62U;

Error refusal(std::string message)
{
    return {"collector", 2, std::move(message)};
}

} // namespace

Result<> checkCounts(std::span<const std::uint8_t> batch)
{
    const auto counts = BatchMessage::count(batch);
    if (!counts)
        return counts.error();
    if (counts->bundles == 0)
        return refusal("a batch without a bundle");
    if (counts->bundles > mostBundles || counts->events > mostEvents)
        return refusal("more than " + std::to_string(mostBundles) + " bundles or " +
                       std::to_string(mostEvents) + " events in one batch");
    return {};
}

Result<> checkBatch(const APMMeasurementBatch &batch, const Arrival &arrival)
{
    std::size_t repeated = 0;
    for (const APMMeasurementBundle &bundle : batch.bundles) {
        if (bundle.appId.empty())
            return refusal("a bundle without an app id");
        if (bundle.index <= 0 || bundle.index > greatestIndex)
            return refusal("a bundle without a valid index");
        const std::size_t longest = std::max(
            {bundle.appId.size(), bundle.databaseId.size(), bundle.metadata.app.appInstanceId.size()});
        if (longest > longestIdentifier)
            return refusal("an identifier of more than " + std::to_string(longestIdentifier) + " bytes");
        repeated += EventLines(bundle, arrival).repeatedBytes();
    }
    if (repeated > mostRepeatedBytes)
        return refusal("events that repeat too much");
    return {};
}

} // namespace skyflare
