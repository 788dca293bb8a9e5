#pragma once

#include "app/App.h"
#include "screens/settings/SettingsItem.h"
#include "ui/ImageOutlet.h"
#include "ui/LabelOutlet.h"
#include "ui/SwitchOutlet.h"

#include <functional>
#include <memory>

namespace skyflare {

/// Shows one setting. Its switch, where it has one, writes into the App.
///
/// Threads: main. Made by makeShared(). Borrows the App.
class SettingsTableViewCell : public QObject, public std::enable_shared_from_this<SettingsTableViewCell> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its table")
    Q_PROPERTY(skyflare::ImageOutlet *iconImageView READ iconImageView CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *titleLabel READ titleLabel CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *subtitleLabel READ subtitleLabel CONSTANT)
    Q_PROPERTY(skyflare::SwitchOutlet *switchControl READ switchControl CONSTANT)

public:
    explicit SettingsTableViewCell(App &app);

    /// Shows `item`, in a cell that may have shown another.
    void configure(const SettingsItem &item);

    void switchValueChanged() const;

    [[nodiscard]] ImageOutlet *iconImageView() { return &iconImageView_; }
    [[nodiscard]] LabelOutlet *titleLabel() { return &titleLabel_; }
    [[nodiscard]] LabelOutlet *subtitleLabel() { return &subtitleLabel_; }
    [[nodiscard]] SwitchOutlet *switchControl() { return &switchControl_; }
    [[nodiscard]] int counter() const { return counter_; }

private:
    /// An action that hands the state of the switch to one setter of the App's.
    [[nodiscard]] std::function<void()> assigning(void (App::*setter)(bool));

    App &app_;
    int counter_ = 0; // Deliberate: nothing changes it.
    ImageOutlet iconImageView_;
    LabelOutlet titleLabel_;
    LabelOutlet subtitleLabel_;
    SwitchOutlet switchControl_;
    std::function<void()> action_;
};

} // namespace skyflare
