#pragma once

#include "platform/desktop/AppearanceSetting.h"
#include "ui/ScreenStack.h"
#include "ui/Theme.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <memory>

namespace skyflare {

/// The app's window: shows what its root view controller shows, and what that presents.
///
/// Threads: main. Shares its root view controller.
class Window {
public:
    /// @param appearance  may be null: then the desktop's palette alone decides between dark and light.
    explicit Window(AppearanceSetting *appearance = nullptr);
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;
    /// Closes it, and lets go of the screens.
    ~Window();

    void setRootViewController(std::shared_ptr<ViewController> root);
    [[nodiscard]] const std::shared_ptr<ViewController> &rootViewController() const { return root_; }

    /// Shows it, or brings it to the front.
    void makeKeyAndVisible();

    [[nodiscard]] ScreenStack &screens() { return screens_; }
    [[nodiscard]] QQuickWindow &quickWindow() { return *window_; }
    [[nodiscard]] Theme &theme();

private:
    void load();

    ScreenStack screens_;
    std::shared_ptr<ViewController> root_;
    QQmlEngine engine_;
    std::unique_ptr<QQuickWindow> window_;
};

/// What has to be set once in a process before its first Window: the font. After the QGuiApplication.
void prepareUserInterface();

} // namespace skyflare
