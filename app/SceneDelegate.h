#pragma once

#include "app/App.h"
#include "ui/Window.h"

#include <functional>
#include <memory>
#include <string>

namespace skyflare {

/// The app's one scene. A desktop gives it no window of its own: it takes over the application's.
///
/// Threads: main. Shares the window.
class SceneDelegate final {
public:
    // scene:willConnectToSession:options:
    /// @param windowOfScene  null for a scene that is no window, which is ignored
    void willConnectToSession(std::shared_ptr<Window> windowOfScene);
    // windowScene:performActionForShortcutItem:completionHandler:
    /// There are no quick actions: none is handled.
    static void performActionForShortcutItem(const std::string &type,
                                             const std::function<void(bool)> &completionHandler);

    void sceneDidDisconnect() { window_.reset(); }

    [[nodiscard]] const std::shared_ptr<Window> &window() const { return window_; }

private:
    std::shared_ptr<Window> window_;
    App &app_ = App::shared();
};

} // namespace skyflare
