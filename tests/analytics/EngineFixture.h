#pragma once

#include "analytics/FIRAnalytics.h"
#include "analytics/proto/EventMessage.h"
#include "analytics/proto/MetadataMessage.h"
#include "platform/base/Text.h"
#include "platform/sqlite/Database.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

namespace doctest {

template <> struct StringMaker<std::vector<std::string>> {
    static String convert(const std::vector<std::string> &texts)
    {
        std::string all;
        for (const std::string &text : texts)
            all += "\n    " + text;
        return all.c_str();
    }
};

} // namespace doctest

namespace skyflare {

/// Counts, so that no two identifiers are the same.
class CountingRandom final : public RandomSource {
public:
    bool isBroken = false;

    Result<> fill(std::span<std::uint8_t> bytes) override
    {
        if (isBroken)
            return Error{"random", 5, "no entropy"};
        std::ranges::fill(bytes, ++last_);
        return {};
    }

private:
    std::uint8_t last_ = 0;
};

/// "level_up a=1 b=text", with the origin in front where it is not "app".
inline std::string shown(const APMEvent &event)
{
    struct Shown {
        std::string operator()(const std::string &text) const { return text; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return shortestDecimal(number); }
        std::string operator()(const APMValue::Array &) const { return "[]"; }
    };
    std::string text = (event.origin == "app" ? "" : event.origin + ":") + event.name;
    for (const APMParameter &parameter : event.parameters)
        text += " " + parameter.name + "=" + std::visit(Shown{}, parameter.value.held());
    return text;
}

inline PropertyList text(const std::string &value)
{
    return value;
}

/// The engine's facade as one process has it, on files of the test's own.
struct EngineProcess {
    struct Place {
        std::filesystem::path folder;
        QueueFactory &queues;
        const Clock &clock;
        APMMonitor &monitor;
        Console &console;
        RandomSource &random;
        PropertyList::Dictionary settings;
    };

    explicit EngineProcess(const Place &place)
        : suiteDefaults(place.folder / "suite.plist", place.console),
          configDefaults(place.folder / "config.plist", place.console),
          suite(suiteDefaults, place.random),
          analytics({.queues = place.queues,
                     .monitor = place.monitor,
                     .clock = place.clock,
                     .ledger = ledger,
                     .suite = suite,
                     .config = config,
                     .openDatabase =
                         [this, place](const StoreLimits &limits) {
                             return APMDatabase::open(
                                 place.folder / "events.sql", {place.monitor, place.clock, config, {}},
                                 limits, {.busyTimeout = std::chrono::milliseconds(0), .files = {}});
                         },
                     .settings = APMRemoteConfig(place.settings)})
    {
    }
    UserDefaults suiteDefaults;
    UserDefaults configDefaults;
    APMPersistedSuite suite;
    MeasurementConfig config{configDefaults};
    EventLedger ledger;
    APMAnalytics analytics;
};

/// An engine in virtual time, behind its public face; it may end and be started again as another process.
struct EngineFixture {
    using Texts = std::vector<std::string>;

    TemporaryFolder folder;
    VirtualTime time;
    RecordingMonitor monitor;
    RecordingConsole console;
    CountingRandom random;
    PropertyList::Dictionary settings;
    APMAnalyticsOptions options;
    std::filesystem::path file = folder / "events.sql";
    std::unique_ptr<EngineProcess> process;

    /// Whatever a test has done, the ledger must balance.
    ~EngineFixture()
    {
        FIRAnalytics::setShared(nullptr);
        if (process)
            CHECK(balance() == "balanced");
    }

    void launch()
    {
        process = std::make_unique<EngineProcess>(
            EngineProcess::Place{folder.path(), time, time, monitor, console, random, settings});
        FIRAnalytics::setShared(&process->analytics);
    }
    void start()
    {
        launch();
        FIRAnalytics::startWithConfiguration(options);
        time.runUntilIdle();
    }
    /// What the public face does not have.
    [[nodiscard]] APMAnalytics &internal() const { return process->analytics; }
    void end()
    {
        CHECK(balance() == "balanced");
        internal().close(time.mainQueue(), std::chrono::milliseconds(250), {});
        time.advance(std::chrono::milliseconds(250));
        FIRAnalytics::setShared(nullptr);
        process.reset();
    }
    void log(std::optional<std::string> name, PropertyList::Dictionary parameters = {})
    {
        FIRAnalytics::logEventWithName(std::move(name), std::move(parameters));
        time.runUntilIdle();
    }

    /// The first column of every row, as another connection sees it: texts and blobs.
    [[nodiscard]] Texts ask(const std::string &sql) const
    {
        const auto database = *Database::open(file, OpenMode::Query, std::chrono::milliseconds(0));
        auto statement = database->prepare(sql);
        Texts rows;
        while (*statement->step()) {
            const auto blob = statement->bytes(0).value_or(std::span<const std::uint8_t>());
            rows.push_back(statement->text(0).value_or(std::string(blob.begin(), blob.end())));
        }
        return rows;
    }
    [[nodiscard]] static std::span<const std::uint8_t> bytesOf(const std::string &text)
    {
        return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
    }
    [[nodiscard]] std::vector<APMEvent> stored() const
    {
        std::vector<APMEvent> events;
        for (const std::string &data : ask("SELECT data FROM raw_events ORDER BY rowid"))
            events.push_back(*EventMessage::decode(bytesOf(data)));
        return events;
    }
    /// What was stored since the last call.
    Texts takeStored()
    {
        Texts texts;
        for (const APMEvent &event : stored())
            texts.push_back(shown(event));
        const std::size_t before = std::exchange(seen, texts.size());
        return {texts.begin() + static_cast<std::ptrdiff_t>(std::min(before, texts.size())), texts.end()};
    }
    /// Without the commentary.
    Texts takeProblems()
    {
        Texts texts;
        for (const auto &line : monitor.takeLines())
            if (line.level == APMMonitor::Level::Error || line.level == APMMonitor::Level::Warning)
                texts.push_back(line.message);
        return texts;
    }
    [[nodiscard]] std::uint64_t count(LedgerEntry entry) const
    {
        return process->ledger.tally().count(entry);
    }
    /// The ledger's equations against the rows that are there: "balanced", or what is wrong.
    [[nodiscard]] std::string balance() const
    {
        const std::uint64_t rows = std::filesystem::exists(file) ? stored().size() : 0;
        const auto balanced = process->ledger.tally().balance(0, rows);
        return balanced ? "balanced" : balanced.error().message;
    }
    std::size_t seen = 0;
};

} // namespace skyflare
