#include "bench/BareSqlite.h"

#include "bench/Machine.h"
#include "bench/WorkFolder.h"
#include "platform/base/Bytes.h"
#include "platform/sqlite/Database.h"

#include <algorithm>
#include <cstdio>

namespace skyflare::bench {

double bareRowsASecond(int count, int rowsATransaction, std::size_t bytesARow)
{
    const WorkFolder folder;
    const auto database =
        *Database::open(folder.path() / "bare", OpenMode::Write, std::chrono::milliseconds(0));
    require(database
                ->execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                          "CREATE TABLE t (name, timestamp, fingerprint, data, is_realtime)")
                .has_value(),
            "no yardstick");
    const Bytes data(bytesARow);
    const double start = now();
    for (int done = 0; done < count; done += rowsATransaction) {
        require(database->execute("BEGIN").has_value(), "no yardstick");
        auto statement = database->prepare("INSERT INTO t VALUES ('catch_photo', 1.5, 7, ?, 0)");
        require(statement && statement->bind(1, std::span(data)), "no yardstick");
        for (int i = std::min(rowsATransaction, count - done); i > 0; --i)
            require(statement->step().has_value(), "no yardstick");
        require(database->execute("COMMIT").has_value(), "no yardstick");
    }
    return count / (now() - start);
}

std::string rows(double aSecond)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.0f rows/s", aSecond);
    return text;
}

} // namespace skyflare::bench
