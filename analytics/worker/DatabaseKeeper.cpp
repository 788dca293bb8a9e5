#include "analytics/worker/DatabaseKeeper.h"

#include "analytics/worker/MeasurementLog.h"

#include <utility>

namespace skyflare {

namespace {

constexpr double retrySeconds = 60;

} // namespace

void DatabaseKeeper::setLimits(const StoreLimits &limits)
{
    limits_ = limits;
    if (database_)
        database_->setLimits(limits);
}

APMDatabase *DatabaseKeeper::database()
{
    if (database_ && !database_->isInTransaction())
        closeUnlessSound();
    const double now = services_.clock.secondsOfUptime();
    if (database_ || now < nextTry_)
        return database_.get();
    if (const auto opened = open(); opened) {
        toldWhy_.clear();
        return database_.get();
    } else if (toldWhy_ != opened.error().message) {
        toldWhy_ = opened.error().message;
        writeLog(services_.monitor, measurementLog::noDatabase, opened.error().description());
    }
    nextTry_ = now + retrySeconds;
    return nullptr;
}

/// A file that is damaged again soon after it was made anew gets no third chance at once: to look through it
/// at every event would take all of the worker's time.
void DatabaseKeeper::closeUnlessSound()
{
    if (std::exchange(isToBeReopened_, false)) {
        const double now = services_.clock.secondsOfUptime();
        if (now - lastDamage_ < retrySeconds)
            nextTry_ = now + retrySeconds;
        lastDamage_ = now;
        database_.reset();
    } else if (database_->hasMoved()) {
        writeLog(services_.monitor, measurementLog::databaseVanished);
        database_.reset();
    }
}

Result<> DatabaseKeeper::open()
{
    auto opened = services_.open(limits_);
    if (!opened)
        return opened.error();
    if (const auto taken = ledgerRecord_.takeOver(**opened); !taken)
        return taken.error();
    database_ = *std::move(opened);
    isToBeReopened_ = false;
    ++openings_;
    return {};
}

void DatabaseKeeper::didFail(const Error &error)
{
    if (!database_ || isToBeReopened_ || !APMDatabase::isDamage(error))
        return;
    isToBeReopened_ = true;
    writeLog(services_.monitor, measurementLog::databaseDamaged, error.description());
}

} // namespace skyflare
