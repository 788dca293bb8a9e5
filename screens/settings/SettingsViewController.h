#pragma once

#include "app/App.h"
#include "platform/base/Console.h"
#include "platform/cloud/FIRRemoteConfig.h"
#include "platform/desktop/URLOpener.h"
#include "ui/ButtonOutlet.h"
#include "ui/LabelOutlet.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

#include <memory>
#include <string>

namespace skyflare {

/// The settings: so far its heading and the way back.
///
/// Threads: main. Borrows its Services, which must outlive it.
class SettingsViewController : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::LabelOutlet *titleLabel READ titleLabel CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *closeButton READ closeButton CONSTANT)

public:
    struct Services {
        App &app;
        Console &console;
        URLOpener &urlOpener;
        std::shared_ptr<FIRRemoteConfig> remoteConfig; ///< may be empty
        std::string version;                           ///< the app's short one; may be empty
    };

    /// The storyboard "SettingsViewController", with the screen "SettingsViewSB".
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared().
    explicit SettingsViewController(const Services &services) : services_(services) {}

    void viewDidLoad() override;

    Q_INVOKABLE void dismissButtonTapped();

    [[nodiscard]] LabelOutlet *titleLabel() { return &titleLabel_; }
    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }

private:
    const Services services_;
    LabelOutlet titleLabel_;
    ButtonOutlet closeButton_;
};

} // namespace skyflare
