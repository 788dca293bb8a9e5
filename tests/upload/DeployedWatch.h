#pragma once

#include "platform/base/Files.h"
#include "platform/base/PropertyList.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/TemporaryFolder.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace skyflare {

/// A copy of skyflare-watch as a deployer has set it up, with its files in a folder of the test's own.
///
/// Threads: one.
class DeployedWatch {
public:
    DeployedWatch() { std::filesystem::copy_file(SKYFLARE_WATCH, folder_ / "skyflare-watch"); }

    /// @param configurationHost  empty: no settings are fetched
    void deploy(const std::string &collectionHost, const std::string &configurationHost) const
    {
        const PropertyList info =
            PropertyList::Dictionary{{"MIPEME_ANALYTICS_COLLECTION_HOST", collectionHost},
                                     {"MIPEME_ANALYTICS_CONFIGURATION_HOST", configurationHost}};
        const PropertyList app = PropertyList::Dictionary{{"MIPEME_APP_ID", std::string("1:2:linux:3")}};
        REQUIRE(replaceFile(folder_ / "Info.plist", info.serialize()));
        REQUIRE(replaceFile(folder_ / "MipemeService-Info.plist", app.serialize()));
    }

    /// Watches the simulated sky, in debug mode, and takes a photo of every burst: about one a second.
    [[nodiscard]] std::unique_ptr<ChildProcess> watch(const std::string &armAfterSeconds = "0") const
    {
        return std::make_unique<ChildProcess>(
            command({"--camera", "simulated:64x36@30", "--sensitivity", "extreme", "--frequency", "5",
                     "--arm-after", armAfterSeconds, "--json", "--quiet", "-FIRDebugEnabled"}));
    }

    /// What --analytics-status says of the database; null: there is none yet.
    [[nodiscard]] nlohmann::json database() const
    {
        ChildProcess process(command({"--analytics-status", "--json"}));
        const auto lines = process.readAll();
        const int status = process.wait();
        CAPTURE(process.errors());
        REQUIRE(lines.size() == 1);
        CHECK(status == 0); // the ledger balances
        return nlohmann::json::parse(lines[0]).at("database");
    }

private:
    const TemporaryFolder folder_;

    [[nodiscard]] std::vector<std::string> command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(),
                         {folder_ / "skyflare-watch", "--data-dir", (folder_ / "data").string()});
        return arguments;
    }
};

} // namespace skyflare
