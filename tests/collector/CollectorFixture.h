#pragma once

#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/BundleMessage.h"
#include "tests/fakes/RunningCollector.h"
#include "tests/fakes/TemporaryFolder.h"

#include <string>
#include <vector>

namespace skyflare {

inline APMMeasurementBundle bundleOf(const std::string &instance, const std::string &database,
                                     std::int64_t index, int events = 1)
{
    APMMeasurementBundle bundle;
    bundle.appId = "1:2:linux:3";
    bundle.databaseId = database;
    bundle.index = index;
    bundle.metadata.app.appInstanceId = instance;
    for (int i = 0; i < events; ++i)
        bundle.events.push_back({"app", "catch_photo", 1.7e9, 0, {{"number", APMValue(std::int64_t{i})}}});
    return bundle;
}

inline Bytes batchOf(const std::vector<APMMeasurementBundle> &bundles)
{
    std::vector<Bytes> encoded;
    for (const auto &bundle : bundles)
        encoded.push_back(BundleMessage::encode(bundle));
    return BatchMessage::encode({.uploadTimestamp = 1.7e9, .engineVersion = "0.1.0"}, encoded);
}

/// "KEY#NUMBER" of every line, in the order of the file.
inline std::vector<std::string> eventsIn(const std::filesystem::path &file)
{
    std::vector<std::string> events;
    for (const auto &line : linesIn(file))
        events.push_back(line["bundle_key"].get<std::string>() + "#" +
                         std::to_string(line["event_number"].get<int>()));
    return events;
}

} // namespace skyflare
