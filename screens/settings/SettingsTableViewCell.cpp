#include "screens/settings/SettingsTableViewCell.h"

namespace skyflare {

SettingsTableViewCell::SettingsTableViewCell(App &app) : app_(app)
{
    connect(&switchControl_, &SwitchOutlet::valueChanged, this, &SettingsTableViewCell::switchValueChanged);
}

void SettingsTableViewCell::configure(const SettingsItem &item)
{
    iconImageView_.setSymbol(item.image.value_or(""));
    titleLabel_.setText(item.title);
    subtitleLabel_.setText(item.subtitle.value_or(""));
    switchControl_.setOn(item.isOn);
    switchControl_.setHidden(item.type == SettingType::Language);
    switch (item.type) {
    case SettingType::AutoSave:
        action_ = assigning(&App::setAutoSave);
        break;
    case SettingType::ManualFocus:
        action_ = assigning(&App::setManualFocus);
        break;
    case SettingType::Language:
        break;
    }
}

std::function<void()> SettingsTableViewCell::assigning(void (App::*setter)(bool))
{
    return [weak = weak_from_this(), setter] {
        if (const auto self = weak.lock())
            (self->app_.*setter)(self->switchControl_.isOn());
    };
}

void SettingsTableViewCell::switchValueChanged() const
{
    if (action_)
        action_();
}

} // namespace skyflare
