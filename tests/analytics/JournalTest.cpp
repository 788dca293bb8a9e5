#include "analytics/MeasurementReader.h"
#include "platform/base/Files.h"
#include "tests/analytics/JournalRun.h"
#include "tests/fakes/FileFaults.h"

using namespace skyflare;
using namespace std::chrono_literals;
using fileFaults::Kind;
using Entry = LedgerEntry;

TEST_CASE_FIXTURE(DatabaseFixture, "a transaction takes what comes within 50 ms, and all is written with it")
{
    JournalRun run(*this);
    run.journal.setAppData({.appId = "1:2"});
    run.log("a");
    run.journal.dailyCounts() = {3, 0, 1, 1, 0, 0, 0};
    time.advance(20ms);
    run.log("a");
    time.advance(29ms);
    run.journal.commitIfDue();
    CHECK(storedNames().empty());
    CHECK(run.count(Entry::Stored) == 0);
    time.advance(1ms);
    REQUIRE(run.journal.updateUserAttribute({"level", "app", 1, APMValue(2.5)}));
    run.log("_b");
    run.journal.commitIfDue();
    CHECK(storedNames() == Names{"a", "a", "_b"});
    CHECK(run.balance() == "balanced");
    CHECK(ask("SELECT name || lifetime_count || current_bundle_count || last_fire_timestamp FROM events") ==
          Names{"_b111700000000.05", "a221700000000.02"});
    CHECK(ask("SELECT daily_public_events_count || '' FROM app_metadata") == Names{"1"});
    CHECK(ask("SELECT entry || count FROM event_ledger") == Names{"accepted3", "stored3"});

    JournalRun next(*this);
    run.journal.close();
    next.log("a");
    CHECK(*next.journal.knowsEventName("a"));
    CHECK(next.journal.publicEventNameCount() == 1);
    CHECK(next.journal.dailyCounts().publicEventsCount == 1);
    REQUIRE(next.journal.userAttributes().size() == 1);
}

TEST_CASE_FIXTURE(DatabaseFixture,
                  "an event that is not taken fails alone, a transaction with all of its events")
{
    JournalRun run(*this);
    run.log("kept");
    run.databases.database()->setLimits({.maxStoredEvents = 0});
    run.log("refused");
    run.databases.database()->setLimits({.maxStoredEvents = 2});
    run.log("later");
    run.journal.commit();
    CHECK(storedNames() == Names{"kept", "later"});
    CHECK(run.count(Entry::Failed) == 1);

    run.databases.database()->setLimits({.maxStoredEvents = 3});
    run.log("x");
    run.log("y");
    run.journal.dailyCounts().eventsCount = 9;
    REQUIRE(run.journal.updateUserAttribute({"level", "app", 1, APMValue(2.5)}));
    fileFaults::plan(Kind::FailFromThenOn, 1);
    run.journal.commit();
    fileFaults::plan(Kind::None);
    CHECK(monitor.lines.back().message ==
          "Events could not be stored. Count, error: 2, Database operation \"end transaction\" failed with "
          "sqlite code 13 and error message \"database or disk is full\"");
    CHECK(run.count(Entry::Failed) == 3);
    CHECK(run.count(Entry::Trimmed) == 0);
    run.log("z");
    CHECK(run.journal.dailyCounts().eventsCount == 0);
    CHECK(run.journal.userAttributes().empty());
    CHECK_FALSE(*run.journal.knowsEventName("x"));
    run.journal.commit();
    CHECK(storedNames() == Names{"kept", "later", "z"});
    CHECK(run.balance() == "balanced");
}

TEST_CASE_FIXTURE(DatabaseFixture,
                  "the ledger goes on from run to run, and tells what became of the rows between")
{
    {
        JournalRun killed(*this);
        killed.ledger.countRefusal(EventLedger::RefusedWhat::Part, APMErrorCode::InvalidParameterName,
                                   FailureCode::TooLong);
        killed.ledger.count(Entry::Accepted, 5); // which never come to an end
        for (const char *name : {"a", "b", "c"})
            killed.log(name);
        killed.journal.commit();
    }
    make("INSERT INTO raw_events (name, timestamp, metadata_fingerprint, data) VALUES ('x', 1, 1, x''), "
         "('y', 1, 1, x'')");
    {
        JournalRun run(*this);
        run.ledger.count(Entry::Accepted); // before the database is open
        run.ledger.count(Entry::Disabled);
        run.log("d");
        run.journal.commit();
        CHECK(run.count(Entry::Accepted) == 10);
        CHECK(run.count(Entry::Abandoned) == 5);
        CHECK(run.count(Entry::Found) == 2);
        CHECK(run.ledger.tally().refusalsByError[3] == 1);
        CHECK(run.balance() == "balanced");
        run.journal.close();
    }
    make("UPDATE event_ledger SET count = 99 WHERE entry = 'stored'"); // more than came in
    JournalRun last(*this);
    REQUIRE(last.databases.database());
    CHECK(last.count(Entry::Found) == 6);
    CHECK(last.balance() == "balanced");
}

TEST_CASE_FIXTURE(DatabaseFixture, "a file that is another's is tried again after a minute, and not before")
{
    auto owner = std::make_unique<OwnerLock>(*OwnerLock::acquire(file));
    JournalRun run(*this);
    run.log("a");
    owner.reset();
    time.advance(59s);
    run.log("b");
    time.advance(1s);
    run.log("c");
    run.journal.commit();
    CHECK(storedNames() == Names{"c"});
    CHECK(run.count(Entry::Failed) == 2);
    CHECK(monitor.lines.size() == 1);
}

TEST_CASE_FIXTURE(DatabaseFixture, "a reader sees what is committed, beside its writer and without one")
{
    CHECK(MeasurementReader::open(file, monitor).error().message ==
          "There is no measurement database at " + file.string());
    JournalRun run(*this);
    run.log("a");
    time.advance(1s);
    run.log("b");
    run.journal.commit();
    run.log("c");
    {
        const auto reader = *MeasurementReader::open(file, monitor);
        const auto status = *reader->status();
        CHECK(status.waitingEvents == 2);
        CHECK(status.oldestEvent == 1'700'000'000);
        CHECK(status.newestEvent == 1'700'000'001);
        CHECK(status.fileBytes > 4096);
        REQUIRE(run.journal.reset());
        CHECK(reader->status()->waitingEvents == 0);
    }
    std::filesystem::copy_file(file, folder / "killed");
    std::filesystem::copy_file(file.string() + "-wal", folder / "killed-wal");
    CHECK((*MeasurementReader::open(folder / "killed", monitor))->status()->ledger.count(Entry::Wiped) == 3);
    CHECK(*readFile(folder / "killed-wal") == *readFile(file.string() + "-wal"));
}
