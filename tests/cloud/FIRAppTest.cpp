#include "platform/cloud/FIRApp.h"

#include "platform/base/AppInfo.h"
#include "platform/cloud/FIRInstallations.h"
#include "platform/linux/ProgramFiles.h"
#include "platform/linux/SystemRandom.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

struct DeploymentFixture {
    TemporaryFolder folder;
    std::vector<std::filesystem::path> folders{folder / "etc", folder / "program"};
    RecordingConsole console;

    Deployment read() { return Deployment::read(folders, console); }
    void writeList(const std::string &file, const std::string &entries) const
    {
        folder.write(file, "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
    }
};

std::string entry(const std::string &key, const std::string &value)
{
    return "<key>" + key + "</key><string>" + value + "</string>";
}

struct NoRandom final : RandomSource {
    Result<> fill(std::span<std::uint8_t> /*bytes*/) override { return Error{"random", 5, "none"}; }
};

} // namespace

TEST_CASE_FIXTURE(DeploymentFixture, "a deployer's Info.plist takes the place of ours, but for the version")
{
    writeList("program/Info.plist", entry("CFBundleShortVersionString", "1.2.3") +
                                        entry("SkyflareStorePage", "https://ours.example/"));
    CHECK(AppInfo::of(read()).storePage == "https://ours.example/");
    writeList("etc/Info.plist", entry("CFBundleShortVersionString", "1.0") +
                                    entry("SkyflareRemoteConfigURL", "https://c.example/") +
                                    entry("SkyflareSupportAddress", "help@example.org"));
    AppInfo info = AppInfo::of(read());
    CHECK(info.shortVersion == "1.2.3");
    CHECK(info.storePage.empty());
    CHECK(info.remoteConfigURL == "https://c.example/");
    CHECK(info.supportAddress == "help@example.org");
    CHECK(console.reports().empty());

    folder.write("etc/Info.plist", "<plist version=");
    writeList("program/Info.plist", "<key>CFBundleShortVersionString</key><integer>3</integer>" +
                                        entry("SkyflareStorePage", "https://ours.example/"));
    info = AppInfo::of(read());
    CHECK(info.shortVersion.empty());
    CHECK(info.storePage == "https://ours.example/");
    REQUIRE(console.reports().size() == 1);
    CHECK(console.reports()[0].starts_with((folder / "etc/Info.plist").string() + " cannot be used: "));

    folder.write("program/Info.plist", "<plist version=");
    CHECK(read().info.empty());
    CHECK(console.reports().size() == 3); // each of the two once more
}

TEST_CASE("as it is built the app knows its version, and nobody to connect to")
{
    RecordingConsole console;
    auto folders = ProgramFiles::standard().deployment;
    folders.at(0) = "/nowhere"; // whatever this machine's deployer has set up
    const auto deployment = Deployment::read(folders, console);
    const AppInfo info = AppInfo::of(deployment);
    CHECK(info.shortVersion.find('.') != std::string::npos);
    CHECK((info.remoteConfigURL + info.storePage + info.supportAddress).empty());
    CHECK(FIROptions::of(deployment).appID.empty());
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(DeploymentFixture, "an installation keeps its identifier, and no other has the same")
{
    SystemRandom random;
    NoRandom noRandom;
    const auto file = folder / "installation.plist";
    UserDefaults defaults(file, console);
    CHECK(!FIRInstallations(defaults, noRandom).installationID());
    CHECK(!std::filesystem::exists(file));
    const std::string made = *FIRInstallations(defaults, random).installationID();
    CHECK(made.size() == 32);
    UserDefaults later(file, console);
    CHECK(*FIRInstallations(later, noRandom).installationID() == made);
    later.setObject(PropertyList(std::string("mine")), "installationID"); // not one of ours
    CHECK(*FIRInstallations(later, random).installationID() != made);
}
