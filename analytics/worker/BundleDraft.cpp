#include "analytics/worker/BundleDraft.h"

#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/BundleMessage.h"
#include "analytics/proto/EventCheck.h"
#include "analytics/store/StoreLog.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace skyflare {

namespace {

/// With times of events, which take as much whatever they are.
std::size_t bytesWithoutEvents(APMMeasurementBundle frame)
{
    frame.startTimestamp = 1;
    frame.endTimestamp = 1;
    return BundleMessage::encode(frame, {}).size();
}

/// Null: it can.
const char *whyUnreadable(const RawEventRow &row)
{
    if (!std::isfinite(row.timestamp) || row.timestamp <= 0) // a bundle of such events has no valid time
        return "it has no valid time";
    return isSoundEvent(row.data) ? nullptr : "it is no event with a name";
}

} // namespace

BundleDraft::BundleDraft(APMMeasurementBundle frame, const BundleLimits &limits, APMMonitor &monitor)
    : frame_(std::move(frame)),
      limits_(limits),
      monitor_(monitor),
      frameBytes_(bytesWithoutEvents(frame_)),
      newestRow_(-std::numeric_limits<double>::infinity())
{
}

BundleDraft::Rows BundleDraft::take(const RawEventRow &row)
{
    if (const char *const why = whyUnreadable(row)) {
        writeLog(monitor_, storeLog::unreadableEvent, std::to_string(row.rowID) + ", " + why);
        ++unreadable_;
    } else if (events_ > 0 && !fits(BundleMessage::sizeOfEvent(row.data.size()))) {
        return Rows::Stop;
    } else {
        add(row);
    }
    maxRowID_ = row.rowID;
    newestRow_ = std::fmax(newestRow_, row.timestamp);
    return events_ < limits_.events ? Rows::GoOn : Rows::Stop;
}

bool BundleDraft::fits(std::size_t eventBytes) const
{
    const std::size_t bundle = frameBytes_ + encoded_.size() + eventBytes;
    return BatchMessage::mostBytesOfFacts + BatchMessage::sizeOfBundle(bundle) <= limits_.batchBytes;
}

void BundleDraft::add(const RawEventRow &row)
{
    BundleMessage::appendEvent(encoded_, row.data);
    frame_.startTimestamp = events_ == 0 ? row.timestamp : std::min(frame_.startTimestamp, row.timestamp);
    frame_.endTimestamp = std::max(frame_.endTimestamp, row.timestamp);
    ++events_;
    if (row.isRealtime == IsRealtime::Yes)
        isRealtime_ = IsRealtime::Yes;
    const auto [place, isNew] = names_.try_emplace(row.name);
    auto &[count, newest] = place->second;
    ++count;
    newest = std::max(newest, row.timestamp);
}

Bytes BundleDraft::message() const
{
    return BundleMessage::encode(frame_, encoded_);
}

} // namespace skyflare
