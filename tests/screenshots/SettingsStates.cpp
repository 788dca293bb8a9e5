#include "tests/screenshots/SettingsStates.h"

#include "platform/base/LanguageName.h"
#include "platform/base/Localization.h"
#include "tests/main/MainFixture.h"

#include <Qt>

namespace skyflare {

namespace {

/// The parts of the one whose window is open, or was last.
std::unique_ptr<MainFixture> &current()
{
    static std::unique_ptr<MainFixture> fixture;
    return fixture;
}

ScreenState settings(const std::string &name, const std::string &language,
                     const std::string &remoteConfig = "{}", std::vector<int> keys = {})
{
    const auto make = [remoteConfig] {
        current().reset();
        current() = std::make_unique<MainFixture>();
        MainFixture &main = *current();
        main.app.setAutoSave(true);
        main.network.answers.push_back(HttpResponse{
            .status = 200, .headers = {}, .body = Bytes(remoteConfig.begin(), remoteConfig.end())});
        main.remoteConfig->configure("https://config.example/skyflare.json");
        const std::string spoken = Localization::shared().language();
        auto screen = SettingsViewController::storyboard(
                          {.app = main.app,
                           .mainQueue = main.time.mainQueue(),
                           .console = main.console,
                           .urlOpener = main.opener,
                           .remoteConfig = main.remoteConfig,
                           .version = "1.10",
                           .languageName = languageName(spoken, spoken).value_or(localized("Unknown"))})
                          .instantiateViewController("SettingsViewSB");
        screen->loadViewIfNeeded();
        main.time.runUntilIdle();
        return screen;
    };
    return {"settings" + name + (language == "en" ? "" : "-" + language), make, language, std::move(keys)};
}

const std::string newsInEnglish =
    R"({"bottomMessage": {"message": "New Year’s Eve: Skyflare 1.11 sees golden rain, too.",)"
    R"( "buttonTitle": "Read More", "buttonURL": "https://example.org/news"}})";
const std::string newsInTurkish =
    R"({"bottomMessage": {"message": "Yılbaşı gecesi: Skyflare 1.11 altın yağmurunu da görüyor.",)"
    R"( "buttonTitle": "Ayrıntılar", "buttonURL": "https://example.org/news"}})";

} // namespace

std::vector<ScreenState> settingsStates()
{
    std::vector<ScreenState> states;
    for (const auto *language : {"en", "tr", "de", "es", "ja"})
        states.push_back(settings("", language));
    states.push_back(settings("-message", "en", newsInEnglish));
    states.push_back(settings("-message", "tr", newsInTurkish));
    const auto focusOn = [](const char *name, std::size_t tabs) {
        return settings(name, "en", newsInEnglish, std::vector<int>(tabs, Qt::Key_Tab));
    };
    states.push_back(focusOn("-focus-switch", 1));
    states.push_back(focusOn("-focus-language", 3));
    states.push_back(focusOn("-focus-button", 4));
    return states;
}

} // namespace skyflare
