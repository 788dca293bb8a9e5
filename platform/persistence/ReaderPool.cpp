#include "platform/persistence/ReaderPool.h"

namespace skyflare {

namespace {

constexpr std::size_t idleLimit = 4;

// Readers only ever wait while another process recovers the log after a crash.
constexpr std::chrono::milliseconds readerTimeout{500};

} // namespace

ReaderPool::Reader::~Reader()
{
    if (database_)
        pool_->giveBack(std::move(database_));
}

Result<ReaderPool::Reader> ReaderPool::acquire()
{
    {
        const std::scoped_lock lock(mutex_);
        if (!idle_.empty()) {
            auto database = std::move(idle_.back());
            idle_.pop_back();
            return Reader(*this, std::move(database));
        }
    }
    auto opened = Database::open(file_, mode_, readerTimeout);
    if (!opened)
        return opened.error();
    return Reader(*this, *std::move(opened));
}

void ReaderPool::giveBack(std::unique_ptr<Database> database)
{
    const std::scoped_lock lock(mutex_);
    if (idle_.size() < idleLimit)
        idle_.push_back(std::move(database));
}

} // namespace skyflare
