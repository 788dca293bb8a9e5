#include "tests/main/MainFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

struct SettingsFixture : MainFixture {
    std::shared_ptr<SettingsViewController> settings =
        settingsStoryboard.instantiateViewController<SettingsViewController>("SettingsViewSB");

    ~SettingsFixture() { settings.reset(); }
    void loadSettings()
    {
        settings->loadViewIfNeeded();
        time.runUntilIdle();
    }
    /// Loads them from a server that answers `body`.
    void loadSettings(const std::string &body, int status = 200)
    {
        network.answers.push_back(
            HttpResponse{.status = status, .headers = {}, .body = Bytes(body.begin(), body.end())});
        remoteConfig->configure("https://config.example/skyflare.json");
        loadSettings();
    }
    [[nodiscard]] SettingsTableViewCell &cell(std::size_t row) const
    {
        return *settings->tableView()->cells().at(row);
    }
    /// "message | button", the button's title if it is shown, as loaded from that "bottomMessage".
    [[nodiscard]] std::string bottomArea() const
    {
        const ButtonOutlet &button = *settings->bottomButton();
        return settings->bottomMessage()->text() + " | " + (button.isHidden() ? "" : button.text());
    }
};

} // namespace

TEST_CASE_FIXTURE(SettingsFixture,
                  "the three rows show how the settings stand when the screen loads, and change them")
{
    app.setManualFocus(true);
    loadSettings();
    app.setManualFocus(false); // by others; not shown
    CHECK(settings->titleLabel()->text() == "Settings");
    Lines rows;
    for (const auto &shown : settings->tableView()->cells())
        rows.push_back(shown->iconImageView()->symbol() + " | " + shown->titleLabel()->text() + " | " +
                       shown->subtitleLabel()->text() + " | " +
                       (shown->switchControl()->isHidden() ? ""
                        : shown->switchControl()->isOn()   ? "on"
                                                           : "off"));
    CHECK(rows ==
          Lines{"photo.badge.checkmark | Auto Save | Automatically saves photo to device's Photo library "
                "when captured | off",
                "livephoto | Manual Focus | Tap to focus on the subject | on",
                "globe | App Language | English | "});

    int changes = 0;
    const auto observation = notifications.addObserver("SettingsChanged", [&changes] { ++changes; });
    cell(0).switchControl()->toggled();
    CHECK(app.autoSave());
    CHECK(UserDefaults(folder / "settings.plist", console).boolForKey("autoSave"));
    CHECK(changes == 1);
    cell(1).switchControl()->toggled();
    cell(1).switchControl()->toggled();
    CHECK(app.manualFocus());
    CHECK(changes == 3);
    CHECK(app.autoSave());
}

TEST_CASE_FIXTURE(SettingsFixture, "the language row leads to the settings page and never shows a switch")
{
    loadSettings();
    auto &reused = cell(0);
    reused.configure(settings->settings().at(2));
    CHECK(reused.switchControl()->isHidden());
    CHECK_FALSE(reused.switchControl()->isOn());
    reused.configure(settings->settings().at(1));
    CHECK_FALSE(reused.switchControl()->isHidden());

    settings->tableView()->rowTapped(0);
    settings->tableView()->rowTapped(1);
    CHECK(opener.opened.empty());
    CHECK_FALSE(app.autoSave());
    settings->tableView()->rowTapped(2);
    CHECK(opener.opened == Lines{"app-settings:"});
    opener.opensNothing = true;
    settings->tableView()->rowTapped(2);
    CHECK(opener.opened.size() == 1);
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
        in.loadSettings(R"({"bottomMessage": )" + bottomMessage + "}");
        CHECK(in.bottomArea() == shown);
        in.settings->bottomButtonTapped();
        CHECK(in.opener.opened == opened);
    }
}

TEST_CASE_FIXTURE(SettingsFixture, "a service that fails is one line, and the foot stays as it was")
{
    loadSettings("", 500);
    CHECK(console.lines().back() ==
          "Error fetching config: the server answers with status 500 (remote configuration 500)");
    CHECK(bottomArea() == "Skyflare | ");
}
