#pragma once

#include "ui/ViewController.h"

#include <functional>
#include <vector>

namespace skyflare {

/// The app's root: a stack of screens, which brings up the first one by itself.
///
/// Threads: main. Owns its screens.
class MainNavigationController final : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's owner")

public:
    using Factory = std::function<std::shared_ptr<ViewController>()>;

    /// @param makeFirstScreen  called once, when the view is loaded; must give a screen.
    explicit MainNavigationController(Factory makeFirstScreen);

    void viewDidLoad() override;

    // pushViewController:animated:
    void pushViewController(std::shared_ptr<ViewController> controller, Animated animated);
    [[nodiscard]] std::shared_ptr<ViewController> topViewController() const;
    [[nodiscard]] std::shared_ptr<ViewController> shownViewController() override;

    // Screens draw their own heads, so there is no bar to show: this is what a screen asked for.
    void setNavigationBarHidden(bool isHidden) { isNavigationBarHidden_ = isHidden; }
    [[nodiscard]] bool isNavigationBarHidden() const { return isNavigationBarHidden_; }

private:
    const Factory makeFirstScreen_;
    std::vector<std::shared_ptr<ViewController>> screens_;
    bool isNavigationBarHidden_ = false;
};

} // namespace skyflare
