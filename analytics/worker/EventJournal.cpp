#include "analytics/worker/EventJournal.h"

#include "analytics/worker/MeasurementLog.h"
#include "platform/base/Text.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

constexpr double busySeconds = 1;

Error noDatabase()
{
    return Error{"journal", 1, "There is no measurement database"};
}

} // namespace

void EventJournal::setAppData(APMAppData app)
{
    app_ = std::move(app);
    metadata_.reset();
}

Result<> EventJournal::begin()
{
    if (database_ && isLost())
        commit();
    if (database_)
        return {};
    const double now = services_.clock.secondsOfUptime();
    if (now < nextBegin_)
        return Error{"journal", 2, "The measurement database takes nothing now"};
    APMDatabase *const database = services_.databases.database();
    if (!database)
        return noDatabase();
    Result<> begun = beginOn(*database);
    if (begun) {
        database_ = database;
        begunAt_ = now;
        return {};
    }
    known_.reset();
    services_.databases.didFail(begun.error());
    if (!APMDatabase::isDamage(begun.error()))
        nextBegin_ = services_.clock.secondsOfUptime() + busySeconds;
    return begun;
}

Result<> EventJournal::beginOn(APMDatabase &database)
{
    if (const auto begun = database.beginTransaction(); !begun)
        return begun.error();
    Result<> loaded = load(database);
    if (loaded)
        return loaded;
    if (!APMDatabase::isDamage(loaded.error()))
        services_.databases.reopen();
    return database.endTransaction(std::move(loaded));
}

Result<> EventJournal::load(APMDatabase &database)
{
    const std::uint64_t opening = services_.databases.openings();
    if (known_ && known_->opening == opening)
        return {};
    metadata_.reset();
    const auto counts = database.dailyCounts();
    if (!counts)
        return counts.error();
    const auto publicNames = database.publicEventNameCount();
    if (!publicNames)
        return publicNames.error();
    auto attributes = database.userAttributesIncludingInternal(IncludingInternal::Yes);
    if (!attributes)
        return attributes.error();
    known_.emplace(
        Known{opening, *counts, *counts, *std::move(attributes), EventAggregatesCache(*publicNames)});
    return {};
}

void EventJournal::commitIfDue()
{
    if (!database_)
        return;
    const std::chrono::duration<double> age(services_.clock.secondsOfUptime() - begunAt_);
    if (age >= longestTransaction || isLost())
        commit();
}

void EventJournal::commit()
{
    if (database_)
        static_cast<void>(end()); // which has told whom it concerns
}

Result<> EventJournal::end()
{
    writeAlong();
    auto ended = database_->endTransaction(damage_ ? Result<>(*damage_) : Result<>());
    database_ = nullptr;
    damage_.reset();
    isMetadataStored_ = false;
    const EventTally uncommitted = std::exchange(uncommitted_, {});
    if (ended) {
        services_.databases.ledgerRecord().didCommit();
        services_.ledger.add(uncommitted);
        return ended;
    }
    known_.reset();
    services_.databases.didFail(ended.error());
    const std::uint64_t lost = uncommitted.count(LedgerEntry::Stored);
    services_.ledger.count(LedgerEntry::Failed, lost);
    if (lost > 0)
        writeLog(services_.monitor, measurementLog::eventsNotStored,
                 std::to_string(lost) + ", " + ended.error().message);
    return ended;
}

Result<> EventJournal::change(const Change &change)
{
    commit();
    if (const auto begun = begin(); !begun)
        return begun.error();
    const auto changed = change({*database_, known_->events, known_->dailyCounts.day, uncommitted_});
    if (!changed)
        damage_ = changed.error();
    return end();
}

/// What fails here, in a transaction that is still whole, is written with the next one: the events are not
/// lost for a count. The store has logged it.
void EventJournal::writeAlong()
{
    static_cast<void>(noting(known_->events.write(*database_)));
    if (known_->dailyCounts != known_->storedCounts) {
        const auto updated = noting(database_->updateDailyCounts(known_->dailyCounts));
        if (updated)
            known_->storedCounts = known_->dailyCounts;
    }
    static_cast<void>(noting(services_.databases.ledgerRecord().write(*database_, uncommitted_)));
}

/// A transaction in a file that turns out to be damaged comes to nothing.
Result<> EventJournal::noting(Result<> done)
{
    if (!done && !damage_ && APMDatabase::isDamage(done.error()))
        damage_ = done.error();
    return done;
}

void EventJournal::close()
{
    commit();
    LedgerRecord &record = services_.databases.ledgerRecord();
    if (services_.databases.isOpen() && !record.isUpToDate() && begin())
        commit();
    services_.databases.close();
    known_.reset();
}

Result<bool> EventJournal::knowsEventName(std::string_view name)
{
    if (!database_)
        return noDatabase();
    const auto found = known_->events.find(*database_, name);
    if (!found) {
        static_cast<void>(noting(found.error()));
        return found.error();
    }
    return *found != nullptr;
}

void EventJournal::writeEvent(APMEvent event, IsRealtime isRealtime)
{
    const Result<> stored = database_ ? noting(store(event, isRealtime)) : Result<>(noDatabase());
    if (stored)
        uncommitted_.add(LedgerEntry::Stored, 1);
    else
        services_.ledger.count(LedgerEntry::Failed);
}

Result<> EventJournal::store(APMEvent &event, IsRealtime isRealtime)
{
    const auto fingerprint = storeMetadata();
    if (!fingerprint)
        return fingerprint.error();
    // Where its aggregates cannot be read, the event counts more than they.
    const auto before = known_->events.find(*database_, event.name);
    if (!before)
        static_cast<void>(noting(before.error()));
    event.previousTimestamp = before && *before ? (*before)->lastFireTimestamp : 0;
    const auto trimmed = database_->trimRawEvents();
    if (!trimmed)
        return trimmed.error();
    uncommitted_.add(LedgerEntry::Trimmed, static_cast<std::uint64_t>(*trimmed));
    if (const auto inserted = database_->insertRawEvent(event, *fingerprint, isRealtime); !inserted)
        return inserted.error();
    if (before)
        known_->events.count(event);
    return {};
}

Result<std::int64_t> EventJournal::storeMetadata()
{
    if (!metadata_) {
        metadata_ = RawEventMetadata::of({known_->userAttributes, app_});
        isMetadataStored_ = false;
    }
    if (!isMetadataStored_) {
        if (const auto inserted = database_->insertIfNotExistsRawEventMetadata(*metadata_); !inserted)
            return inserted.error();
        isMetadataStored_ = true;
    }
    return metadata_->fingerprint;
}

std::vector<APMUserAttribute>::iterator EventJournal::placeOf(std::string_view name)
{
    return std::ranges::lower_bound(known_->userAttributes, name, {}, &APMUserAttribute::name);
}

Result<> EventJournal::updateUserAttribute(const APMUserAttribute &attribute)
{
    if (!database_)
        return noDatabase();
    if (const auto updated = noting(database_->updateUserAttribute(attribute)); !updated)
        return updated.error();
    APMUserAttribute kept = attribute;
    kept.name = validUtf8(attribute.name);
    const auto place = placeOf(kept.name);
    if (place != known_->userAttributes.end() && place->name == kept.name)
        *place = std::move(kept);
    else
        known_->userAttributes.insert(place, std::move(kept));
    metadata_.reset();
    return {};
}

Result<> EventJournal::deleteUserAttributeWithName(std::string_view name)
{
    if (!database_)
        return noDatabase();
    if (const auto deleted = noting(database_->deleteUserAttributeWithName(name)); !deleted)
        return deleted.error();
    const std::string kept = validUtf8(name);
    const auto place = placeOf(kept);
    if (place != known_->userAttributes.end() && place->name == kept) {
        known_->userAttributes.erase(place);
        metadata_.reset();
    }
    return {};
}

Result<> EventJournal::deleteStaleDataIfDue()
{
    return removeRows({LedgerEntry::Stale, LedgerEntry::QueueStale}, &APMDatabase::maybeDeleteStaleData);
}

Result<> EventJournal::reset()
{
    auto wiped = removeRows({LedgerEntry::Wiped, LedgerEntry::QueueWiped}, &APMDatabase::reset);
    known_.reset();
    return wiped;
}

/// Where no bundle is left, all that were in bundles have gone: those of a bundle that could not be read,
/// too.
Result<> EventJournal::removeRows(const RemovalEntries &entries, const Removal &removal)
{
    commit();
    APMDatabase *const database = services_.databases.database();
    if (!database)
        return noDatabase();
    LedgerRecord &record = services_.databases.ledgerRecord();
    EventTally uncommitted;
    const auto removed = removal(*database, [&](const APMDatabase::RemovedEvents &events) {
        const auto inBundles = static_cast<std::uint64_t>(services_.ledger.tally().bundledEvents());
        uncommitted.add(entries.raw, events.raw);
        uncommitted.add(entries.inBundles, events.isQueueEmpty ? inBundles : events.inBundles);
        return record.write(*database, uncommitted);
    });
    if (!removed) {
        services_.databases.didFail(removed.error());
        return removed.error();
    }
    record.didCommit();
    services_.ledger.add(uncommitted);
    return {};
}

} // namespace skyflare
