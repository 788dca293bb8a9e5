#include "tests/main/MainFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

struct SettingsFixture : MainFixture {
    std::shared_ptr<SettingsViewController> settings =
        settingsStoryboard.instantiateViewController<SettingsViewController>("SettingsViewSB");

    void loadSettings()
    {
        settings->loadViewIfNeeded();
        time.runUntilIdle();
    }
    [[nodiscard]] SettingsTableViewCell &cell(std::size_t row) const
    {
        return *settings->tableView()->cells().at(row);
    }
    /// "message | button", the button's title if it is shown.
    [[nodiscard]] std::string bottomArea() const
    {
        const ButtonOutlet &button = *settings->bottomButton();
        return settings->bottomMessage()->text() + " | " + (button.isHidden() ? "" : button.text());
    }
};

} // namespace

TEST_CASE_FIXTURE(SettingsFixture, "the three rows show how the settings stand when the screen loads")
{
    app.setManualFocus(true);
    loadSettings();
    app.setManualFocus(false); // by others; not shown
    CHECK_FALSE(cell(0).switchControl()->isOn());
    CHECK(cell(1).switchControl()->isOn());
    CHECK(cell(2).switchControl()->isHidden());
    CHECK(cell(2).subtitleLabel()->text() == "English");

    int changes = 0;
    const auto observation = notifications.addObserver("SettingsChanged", [&changes] { ++changes; });
    cell(1).switchControl()->toggled();
    cell(1).switchControl()->toggled();
    CHECK(app.manualFocus());
    CHECK(changes == 2);
    settings->tableView()->rowTapped(0);
    CHECK_FALSE(app.autoSave());
    opener.opensNothing = true;
    settings->tableView()->rowTapped(2);
    CHECK(opener.opened.empty());
}

TEST_CASE("the foot shows what the service says, else the version, and opens allowed addresses alone")
{
    struct Row {
        std::string bottomMessage; ///< JSON
        std::string shown;
        Lines opened;
    };
    for (const auto &[bottomMessage, shown, opened] : {
             Row{R"({"message": "Hi", "buttonTitle": "More", "buttonURL": "https://a.example/x"})",
                 "Hi | More",
                 {"https://a.example/x"}},
             Row{R"({"message": "", "buttonTitle": "More", "buttonURL": "http://a.example"})",
                 "Skyflare 1.10 | More",
                 {"http://a.example"}},
             Row{R"({"message": "Hi", "buttonURL": "https://a.example"})", "Hi | ", {"https://a.example"}},
             Row{R"({"buttonTitle": "More"})", "Skyflare 1.10 | More", {}}, // shown all the same
             Row{R"({"buttonTitle": "More", "buttonURL": "no address"})", "Skyflare 1.10 | More", {}},
             Row{R"({"buttonTitle": "More", "buttonURL": "file:///etc/passwd"})", "Skyflare 1.10 | More", {}},
             Row{R"({"message": "Hi", "buttonTitle": 1})", "Skyflare 1.10 | ", {}},
             Row{R"("not JSON")", "Skyflare 1.10 | ", {}},
             Row{"null", "Skyflare 1.10 | ", {}},
         }) {
        CAPTURE(bottomMessage);
        SettingsFixture in;
        in.serveConfig(R"({"bottomMessage": )" + bottomMessage + "}");
        in.loadSettings();
        CHECK(in.bottomArea() == shown);
        in.settings->bottomButtonTapped();
        CHECK(in.opener.opened == opened);
    }
}

TEST_CASE_FIXTURE(SettingsFixture, "a service that fails is one line, and the foot stays as it was")
{
    serveConfig("", 500);
    loadSettings();
    CHECK(console.lines().back() ==
          "Error fetching config: the server answers with status 500 (remote configuration 500)");
    CHECK(bottomArea() == "Skyflare | ");
}
