#pragma once

#include "platform/sqlite/Database.h"

#include <memory>
#include <mutex>
#include <vector>

namespace skyflare {

/// Connections that read, one for each thread that reads at the moment. In a write-ahead log no reader
/// waits for a writer.
///
/// Threads: any. Outlives what it lends.
class ReaderPool {
public:
    /// A connection on loan; it goes back when this ends.
    class Reader {
    public:
        Reader(ReaderPool &pool, std::unique_ptr<Database> database)
            : pool_(&pool), database_(std::move(database))
        {
        }
        Reader(Reader &&) noexcept = default;
        Reader(const Reader &) = delete;
        Reader &operator=(const Reader &) = delete;
        Reader &operator=(Reader &&) = delete;
        ~Reader();

        Database &operator*() const { return *database_; }

    private:
        ReaderPool *pool_;
        std::unique_ptr<Database> database_;
    };

    ReaderPool(std::filesystem::path file, OpenMode mode) : file_(std::move(file)), mode_(mode) {}

    Result<Reader> acquire();

private:
    const std::filesystem::path file_;
    const OpenMode mode_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<Database>> idle_;

    void giveBack(std::unique_ptr<Database> database);
};

} // namespace skyflare
