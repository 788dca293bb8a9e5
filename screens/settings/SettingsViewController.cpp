#include "screens/settings/SettingsViewController.h"

#include "platform/base/Localization.h"
#include "ui/SharedObject.h"

namespace skyflare {

Storyboard SettingsViewController::storyboard(const Services &services)
{
    return {"SettingsViewController",
            {{"SettingsViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Settings/SettingsView.qml")),
              [services] { return makeShared<SettingsViewController>(services); }}}};
}

void SettingsViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    titleLabel_.setText(localized("Settings"));
    closeButton_.setSymbol("close");
    closeButton_.setAccessibleName(localized("Close"));
}

void SettingsViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

} // namespace skyflare
