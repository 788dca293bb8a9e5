#pragma once

#include "app/App.h"
#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "platform/cloud/FIRRemoteConfig.h"
#include "platform/desktop/URLOpener.h"
#include "screens/settings/SettingsItem.h"
#include "screens/settings/SettingsTableView.h"
#include "ui/ButtonOutlet.h"
#include "ui/LabelOutlet.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// The settings: three rows, and below them a message and a link that whoever runs the service can change.
///
/// Threads: main. Borrows its Services, which must outlive it.
class SettingsViewController : public skyflare::ViewController, private SettingsTableViewDelegate {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::LabelOutlet *titleLabel READ titleLabel CONSTANT)
    Q_PROPERTY(skyflare::SettingsTableView *tableView READ tableView CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *bottomButton READ bottomButton CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *bottomMessage READ bottomMessage CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *closeButton READ closeButton CONSTANT)

public:
    struct Services {
        App &app;
        DispatchQueue &mainQueue;
        Console &console;
        URLOpener &urlOpener;
        std::shared_ptr<FIRRemoteConfig> remoteConfig; ///< may be empty
        std::string version;                           ///< the app's short one; may be empty
        std::string languageName;                      ///< of the app's language, in the user's
    };

    /// The storyboard "SettingsViewController", with the screen "SettingsViewSB".
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared().
    explicit SettingsViewController(const Services &services);

    void viewDidLoad() override;

    Q_INVOKABLE void dismissButtonTapped();
    Q_INVOKABLE void bottomButtonTapped();

    [[nodiscard]] int numberOfRowsInSection(int section) const override;
    [[nodiscard]] std::shared_ptr<SettingsTableViewCell> cellForRowAtIndexPath(int row) override;
    void didSelectRowAtIndexPath(int row) override;

    [[nodiscard]] LabelOutlet *titleLabel() { return &titleLabel_; }
    [[nodiscard]] SettingsTableView *tableView() { return &tableView_; }
    [[nodiscard]] ButtonOutlet *bottomButton() { return &bottomButton_; }
    [[nodiscard]] LabelOutlet *bottomMessage() { return &bottomMessage_; }
    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }
    [[nodiscard]] const std::vector<SettingsItem> &settings() const { return settings_; }

private:
    void buildRows();
    void fetchRemoteConfig();
    void showBottomArea();

    LabelOutlet titleLabel_;
    SettingsTableView tableView_;
    ButtonOutlet bottomButton_;
    LabelOutlet bottomMessage_;
    ButtonOutlet closeButton_;
    const Services services_;
    std::vector<SettingsItem> settings_;
    std::shared_ptr<FIRRemoteConfig> remoteConfig_; ///< empty before it is loaded
    std::function<void()> bottomButtonAction_;
};

} // namespace skyflare
