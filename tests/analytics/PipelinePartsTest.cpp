#include "analytics/pipeline/APMAnalyticsOptions.h"
#include "analytics/pipeline/APMConsoleMonitor.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/RecordingMonitor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/VirtualTime.h"

#include <doctest/doctest.h>

namespace skyflare {

TEST_CASE("launch arguments decide, off before on, and later starts remember it")
{
    const TemporaryFolder folder;
    RecordingConsole console;
    const std::pair<std::vector<const char *>, MonitorModes> starts[] = {
        {{"--", "-FIRDebugEnabled"}, {false, false}},
        {{"film.mp4", "-FIRDebugEnabled", "-APMAnalyticsVerboseLoggingEnabled"}, {true, true}},
        {{"--quiet"}, {true, true}},
        {{"-FIRAnalyticsDebugEnabled", "-noAPMAnalyticsDebugEnabled"}, {false, true}},
        {{"-FIRAnalyticsVerboseLoggingDisabled"}, {false, false}},
        {{}, {false, false}},
    };
    for (const auto &[arguments, expected] : starts) {
        UserDefaults reread(folder / "suite.plist", console);
        CHECK(decideMonitorModes(LaunchSwitches::in(arguments), reread) == expected);
    }
    CHECK(isLaunchArgument("-noFIRAnalyticsDebugEnabled"));
    CHECK_FALSE(isLaunchArgument("-FIRDebug"));
}

TEST_CASE("the monitor reports problems always, once a minute each, and comments when verbose, in one line")
{
    using Level = APMMonitor::Level;
    RecordingConsole console;
    VirtualTime time;
    for (const bool verbose : {false, true}) {
        APMConsoleMonitor monitor(console, time, {.debugMode = true, .verboseLogging = verbose});
        monitor.log(Level::Error, 22000, "a\nb\x1B[31m\xC2\x85\xE2\x80\xA8\xFF \xC3\xA4");
        monitor.log(Level::Debug, 1, "quiet");
    }
    const std::string problem = "<AppMeasurement> error 22000: a b [31m  \xEF\xBF\xBD \xC3\xA4";
    CHECK(console.reports() == std::vector<std::string>{problem, problem});
    CHECK(console.lines() == std::vector<std::string>{"<AppMeasurement> debug 1: quiet"});

    console.clear();
    APMConsoleMonitor monitor(console, time, {});
    const auto fail = [&monitor](int code) { monitor.log(Level::Error, code, "disk full"); };
    for (int i = 0; i < 3; ++i) {
        fail(22000);
        fail(22001);
        time.advance(std::chrono::seconds(29));
    }
    fail(22000); // after 87 seconds
    const std::string line = "<AppMeasurement> error 22000: disk full";
    const std::string other = "<AppMeasurement> error 22001: disk full";
    CHECK(console.reports() == std::vector<std::string>{line, other, line + " (and 2 times before)"});
}

TEST_CASE("options come from the first sound file, and the configuration in it goes before all")
{
    TemporaryFolder folder;
    RecordingMonitor monitor;
    const std::filesystem::path folders[] = {folder / "etc", folder / "program"};
    const auto put = [&](const char *name, std::string_view inside) {
        folder.write(name, "<plist version=\"1.0\"><dict>" + std::string(inside));
    };
    RecordingConsole console;
    const auto load = [&] { return APMAnalyticsOptions::of(Deployment::read(folders, console), monitor); };
    CHECK(load() == APMAnalyticsOptions());
    CHECK(monitor.takeLines().at(0).message.starts_with(
        "Mipeme App ID from MipemeService-Info.plist is empty. Please, define MIPEME_APP_ID in"
        " MipemeService-Info.plist for Analytics to work reliably. See"));

    put("program/MipemeService-Info.plist", "<key>MIPEME_APP_ID</key><string>1:2</string></dict></plist>");
    const PropertyList::Dictionary configuration{{"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", true}};
    const PropertyList info = PropertyList::Dictionary{
        {"FIREBASE_ANALYTICS_COLLECTION_DEACTIVATED", false},
        {"FIREBASE_ANALYTICS_COLLECTION_ENABLED", std::string("NO")},
        {"FirebaseAutomaticScreenReportingEnabled", std::string("perhaps")},
        {"MIPEME_ANALYTICS_DEFAULT_ALLOW_AD_STORAGE", std::int64_t{0}},
        {"FIREBASE_ANALYTICS_CONFIGURATION", configuration},
    };
    const Bytes bytes = info.serialize();
    folder.write("program/Info.plist", std::string(bytes.begin(), bytes.end()));
    put("etc/Info.plist", "");
    APMAnalyticsOptions expected;
    expected.appID = "1:2";
    expected.collectionEnabled = false;
    expected.collectionDeactivated = true;
    expected.allowAdStorage = false;
    CHECK(load() == expected);
    CHECK(monitor.lines.size() == 1);
    CHECK(monitor.lines.at(0).message.ends_with(" Key: FirebaseAutomaticScreenReportingEnabled"));

    put("etc/Info.plist", "</dict></plist>");
    CHECK(load().collectionEnabled);
}

} // namespace skyflare
