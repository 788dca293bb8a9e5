#include "platform/persistence/WriterGate.h"

#include <sqlite3.h>

namespace skyflare {

WriterGate::Turn::~Turn()
{
    if (!gate_)
        return;
    const std::scoped_lock lock(gate_->mutex_);
    gate_->taken_ = false;
    gate_->freed_.notify_one();
}

Result<WriterGate::Turn> WriterGate::take(std::chrono::milliseconds atMost)
{
    std::unique_lock lock(mutex_);
    if (!freed_.wait_for(lock, atMost, [this] { return !taken_; }))
        return Error{"SQLite", SQLITE_BUSY, sqlite3_errstr(SQLITE_BUSY)};
    taken_ = true;
    return Turn(*this);
}

} // namespace skyflare
