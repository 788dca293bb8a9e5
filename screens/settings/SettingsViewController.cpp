#include "screens/settings/SettingsViewController.h"

#include "platform/base/Localization.h"
#include "ui/SharedObject.h"

namespace skyflare {

namespace {

using Texts = std::map<std::string, std::string>;

/// Empty where there is none.
std::string textAt(const Texts &texts, const std::string &key)
{
    const auto found = texts.find(key);
    return found == texts.end() ? "" : found->second;
}

} // namespace

Storyboard SettingsViewController::storyboard(const Services &services)
{
    return {"SettingsViewController",
            {{"SettingsViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Settings/SettingsView.qml")),
              [services] { return makeShared<SettingsViewController>(services); }}}};
}

SettingsViewController::SettingsViewController(const Services &services) : services_(services)
{
    closeButton_.setSymbol("close");
    bottomMessage_.setText("Skyflare"); // until more is known
    bottomButton_.setHidden(true);
}

void SettingsViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    tableView_.setDelegate(*this);
    titleLabel_.setText(localized("Settings"));
    closeButton_.setAccessibleName(localized("Close"));
    buildRows();
    fetchRemoteConfig();
}

void SettingsViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

// --- The rows

void SettingsViewController::buildRows()
{
    settings_ = {
        {.type = SettingType::AutoSave,
         .title = localized("Auto Save"),
         .subtitle = localized("Automatically saves photo to device's Photo library when captured"),
         .image = "photo.badge.checkmark",
         .isOn = services_.app.autoSave()},
        {.type = SettingType::ManualFocus,
         .title = localized("Manual Focus"),
         .subtitle = localized("Tap to focus on the subject"),
         .image = "livephoto",
         .isOn = services_.app.manualFocus()},
        {.type = SettingType::Language,
         .title = localized("App Language"),
         .subtitle = services_.languageName,
         .image = "globe",
         .isOn = false},
    };
    tableView_.reloadData();
}

int SettingsViewController::numberOfRowsInSection(int /*section*/) const
{
    return static_cast<int>(settings_.size());
}

std::shared_ptr<SettingsTableViewCell> SettingsViewController::cellForRowAtIndexPath(int row)
{
    auto cell = makeShared<SettingsTableViewCell>(services_.app);
    cell->configure(settings_.at(static_cast<std::size_t>(row)));
    return cell;
}

void SettingsViewController::didSelectRowAtIndexPath(int row)
{
    const std::string page(openSettingsURLString);
    if (settings_.at(static_cast<std::size_t>(row)).type == SettingType::Language &&
        services_.urlOpener.canOpenURL(page))
        services_.urlOpener.openURL(page);
}

// --- The bottom area

void SettingsViewController::fetchRemoteConfig()
{
    remoteConfig_ = services_.remoteConfig;
    if (!remoteConfig_)
        return;
    const auto weak = std::weak_ptr(std::static_pointer_cast<SettingsViewController>(shared_from_this()));
    remoteConfig_->fetchAndActivateWithCompletionHandler(
        services_.mainQueue, [weak](const Result<FetchAndActivateStatus> &outcome) {
            const auto self = weak.lock();
            if (!self)
                return;
            if (outcome)
                self->showBottomArea();
            else
                self->services_.console.printLine("Error fetching config: " + outcome.error().description());
        });
}

void SettingsViewController::showBottomArea()
{
    const Texts texts = remoteConfig_->configValueForKey("bottomMessage").textsByKey().value_or(Texts());
    const std::string url = textAt(texts, "buttonURL");
    const std::string message = textAt(texts, "message");
    const std::string buttonTitle = textAt(texts, "buttonTitle");

    if (!formsURL(url))
        bottomButton_.setHidden(true);
    else if (services_.urlOpener.canOpenURL(url))
        bottomButtonAction_ = [&opener = services_.urlOpener, url] { opener.openURL(url); };

    bottomMessage_.setText(message.empty() ? "Skyflare " + services_.version : message);

    // Deliberate: a title shows the button even where its address is none; it then does nothing.
    if (!buttonTitle.empty())
        bottomButton_.setText(buttonTitle);
    bottomButton_.setHidden(buttonTitle.empty());
}

void SettingsViewController::bottomButtonTapped()
{
    if (bottomButtonAction_)
        bottomButtonAction_();
}

} // namespace skyflare
