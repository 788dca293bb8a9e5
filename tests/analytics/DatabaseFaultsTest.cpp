#include "platform/base/Files.h"
#include "tests/analytics/DatabaseFixture.h"
#include "tests/fakes/FileFaults.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

using namespace skyflare;
using fileFaults::Kind;

namespace {

using Names = DatabaseFixture::Names;

/// Faults for as long as this lives.
struct Faults {
    explicit Faults(Kind kind, long at = 0) { fileFaults::plan(kind, at); }
    Faults(const Faults &) = delete;
    Faults &operator=(const Faults &) = delete;
    ~Faults() { fileFaults::plan(Kind::None); }
};

/// An older version's file: without the columns that came later, with another declaration of the time.
constexpr const char *olderTable = R"(
    CREATE TABLE raw_events (name TEXT NOT NULL, timestamp INTEGER NOT NULL,
                             metadata_fingerprint INTEGER NOT NULL, data BLOB NOT NULL, note VARCHAR(9));
    INSERT INTO raw_events (rowid, name, timestamp, metadata_fingerprint, data, note)
        VALUES (3, 'a', 5, 1, x'0A0161', 'x'), (7, 'b', 6, 1, x'0A0162', NULL);
    CREATE TABLE queue (data BLOB NOT NULL, bundle_end_timestamp REAL NOT NULL);
    INSERT INTO queue VALUES (x'01', 2);)";

/// Stores events alone, in twos, and trims; calls `committed` with the names of those that are there for
/// good.
void storeMany(DatabaseFixture &user, const std::function<void(const Names &)> &committed)
{
    const auto database = user.tryOpen();
    if (!database)
        return;
    const auto metadata = RawEventMetadata::of({{}, {.appId = "1"}});
    const auto insert = [&](const std::string &name) -> Result<> {
        if (const auto done = (*database)->insertIfNotExistsRawEventMetadata(metadata); !done)
            return done.error();
        return (*database)->insertRawEvent(user.event(name), metadata.fingerprint, IsRealtime::No);
    };
    for (int number = 0; number < 12; ++number) {
        const std::string name = "e" + std::to_string(number);
        if (number % 3 == 0) {
            if (insert(name))
                committed({name});
            continue;
        }
        const Names two{name, name + "b"};
        // Deliberate: goes on after a failure, as nothing may be stored then outside of the transaction.
        const auto done = (*database)->performTransactionWithError([&]() -> Result<> {
            const bool first = insert(two[0]).has_value();
            const bool second = insert(two[1]).has_value();
            return first && second ? Result<>() : Result<>(Error{"test", 1, "not stored"});
        });
        if (done)
            committed(two);
    }
}

/// Of what was committed, in order, the newest are there, each once, and nothing else.
void checkStored(DatabaseFixture &user, const Names &committed, std::size_t unknown)
{
    const auto database = user.open();
    CHECK(user.ask("PRAGMA integrity_check") == Names{"ok"});
    Names stored = user.storedNames();
    CHECK(std::int64_t(stored.size()) == *database->rawEventCount());
    const auto limit = static_cast<std::size_t>(user.limits.maxStoredEvents);
    CHECK(stored.size() <= limit);
    if (unknown > 0 && !stored.empty() && std::ranges::find(committed, stored.back()) == committed.end()) {
        // Killed after it was on the disk and before it could say so: one transaction at most.
        const std::string number = stored.back().substr(0, stored.back().find('b'));
        CHECK(std::erase_if(stored, [&](const std::string &name) {
                  return name == number || name == number + "b";
              }) <= 2);
    }
    const std::size_t kept = std::min(stored.size(), committed.size());
    CHECK(kept >= std::min(committed.size(), limit - unknown));
    CHECK(stored == Names(committed.end() - std::ptrdiff_t(kept), committed.end()));
}

} // namespace

TEST_CASE("a database of an older version keeps its rows and gains what it lacks")
{
    DatabaseFixture user;
    user.make(olderTable);
    user.make(
        "CREATE TABLE events (name TEXT PRIMARY KEY, other INTEGER NOT NULL);" // lacks what it must have
        "CREATE TABLE subscriptions (subscription_id TEXT NOT NULL PRIMARY KEY, b INTEGER NOT NULL)");
    for (int round = 0; round < 2; ++round) {
        user.monitor.takeLines();
        const auto database = user.open();
        CHECK(user.monitor.takeLines() ==
              std::vector<RecordingMonitor::Line>{
                  {APMMonitor::Level::Error, 22006,
                   "Failed to ensure table. Table, error: events, Table is missing required columns"},
                  {APMMonitor::Level::Error, 22006,
                   "Failed to ensure table. Table, error: subscriptions, Table contains unknown non-optional "
                   "columns"}});
        CHECK(user.ask("SELECT type FROM pragma_table_info('raw_events') WHERE name = 'timestamp'") ==
              Names{"REAL"});
        CHECK(user.ask("SELECT rowid || name || timestamp || ifnull(note, '-') || (is_realtime IS NULL) "
                       "FROM raw_events") == Names{"3a5.0x1", "7b6.0-1"});
        CHECK(user.ask("SELECT hex(data) || ifnull(retry_count, '-') FROM queue") == Names{"01-"});
        CHECK(user.ask("SELECT name FROM sqlite_master WHERE name LIKE '%_old'").empty());
        CHECK(*database->rawEventCount() == 2);
        CHECK(database->rawEventsWithMetadataFingerprint(1)->events.at(1).event.name == "b");
    }
}

TEST_CASE("only a file that says that it is damaged is made anew")
{
    const auto garbage = [](DatabaseFixture &user) { REQUIRE(replaceFile(user.file, Bytes(5000, 'x'))); };
    const auto damaged = [](DatabaseFixture &user) {
        user.make("CREATE TABLE t(a); CREATE INDEX i ON t(a); INSERT INTO t VALUES (1), (2), (3)");
        Bytes bytes = *readFile(user.file);
        std::fill_n(bytes.begin() + 2 * 4096 + 8, 100, std::uint8_t{0x55}); // the index
        REQUIRE(replaceFile(user.file, bytes));
    };
    for (const auto &make : {std::function<void(DatabaseFixture &)>(garbage), {damaged}}) {
        DatabaseFixture user;
        make(user);
        const auto database = user.open();
        CHECK(*database->isRawEventsEmpty());
        CHECK(database->insertRawEvent(user.event("a"), 1, IsRealtime::No));
        CHECK(user.ask("SELECT name FROM sqlite_master WHERE name = 't'").empty());
        CHECK(std::ranges::count(user.monitor.lines, 22004, &RecordingMonitor::Line::messageCode) == 1);
    }

    DatabaseFixture user;
    user.make(olderTable);
    const Bytes before = *readFile(user.file);
    const auto refuses = [&](int code) {
        const auto opened = user.tryOpen();
        REQUIRE_FALSE(opened);
        CHECK(opened.error().code == code);
        CHECK(*readFile(user.file) == before);
    };
    SUBCASE("not one that is locked")
    {
        const auto other = user.raw();
        REQUIRE(other->execute("BEGIN EXCLUSIVE"));
        refuses(5);
    }
    SUBCASE("not one that cannot be written")
    {
        const Faults faults(Kind::ReadOnly);
        refuses(1);
        CHECK(user.monitor.lines.back().message == "Database is read-only");
    }
    SUBCASE("not one that another process owns")
    {
        const auto owner = OwnerLock::acquire(user.file);
        REQUIRE(owner);
        refuses(11);
        CHECK(user.tryOpen().error().message == "another process is using " + user.file.string());
    }
}

TEST_CASE("whichever call to the files fails, what was stored is there, once, and nothing else")
{
    for (const Kind kind : {Kind::FailOnce, Kind::FailFromThenOn}) {
        long calls = 1;
        for (long at = 0; at <= calls; ++at) {
            CAPTURE(int(kind));
            CAPTURE(at);
            DatabaseFixture user(inMemory());
            user.make(olderTable);
            user.limits.maxStoredEvents = 15;
            Names committed{"a", "b"};
            {
                const Faults faults(kind, at);
                storeMany(user, [&](const Names &names) {
                    committed.insert(committed.end(), names.begin(), names.end());
                });
                if (at == 0)
                    calls = fileFaults::calls();
            }
            checkStored(user, committed, 0);
        }
        CHECK(calls > 50);
    }
}

TEST_CASE("killed at any change to its files, it keeps every event that was stored, once")
{
    const auto run = [](long at) {
        DatabaseFixture user(inMemory());
        user.make(olderTable);
        user.limits.maxStoredEvents = 15;
        int ends[2]{};
        REQUIRE(pipe(ends) == 0);
        const auto say = [&](const std::string &line) {
            return write(ends[1], line.data(), line.size()) == ssize_t(line.size());
        };
        const pid_t child = fork();
        if (child == 0) {
            fileFaults::plan(Kind::KillAtChange, at);
            bool said = true;
            storeMany(user, [&](const Names &names) {
                for (const std::string &name : names)
                    said = said && say(name + ' ');
            });
            _exit(said && say(std::to_string(fileFaults::calls())) ? 0 : 1);
        }
        close(ends[1]);
        std::string told;
        char part[256];
        for (ssize_t size = 0; (size = read(ends[0], part, sizeof part)) > 0;)
            told.append(part, std::size_t(size));
        close(ends[0]);
        int status = 0;
        REQUIRE(waitpid(child, &status, 0) == child);
        CHECK(WIFSIGNALED(status) == (at > 0));
        Names committed{"a", "b"};
        std::istringstream words(told);
        for (std::string word; words >> word;)
            committed.push_back(word);
        const std::string last = committed.back();
        if (at == 0)
            committed.pop_back();
        checkStored(user, committed, at == 0 ? 0 : 2);
        return at == 0 ? std::stol(last) : 0;
    };
    const long changes = run(0);
    CHECK(changes > 50);
    for (long at = 1; at <= changes; ++at) {
        CAPTURE(at);
        run(at);
    }
}
