#include "app/WindowActivity.h"

#include "screens/main/MainViewController.h"

#include <QGuiApplication>
#include <string_view>

namespace skyflare {

WindowActivity::WindowActivity(QWindow &window, NotificationCenter &notificationCenter, Shell shell)
    : notificationCenter_(notificationCenter), shell_(shell)
{
    connect(&window, &QWindow::visibilityChanged, this, &WindowActivity::windowChanged);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &WindowActivity::applicationChanged);
}

WindowActivity::Shell WindowActivity::shellFor(const char *currentDesktop, const char *plasmaPlatform)
{
    const std::string_view desktop = currentDesktop != nullptr ? currentDesktop : "";
    const std::string_view plasma = plasmaPlatform != nullptr ? plasmaPlatform : "";
    const auto names = [desktop](std::string_view shell) {
        return desktop.find(shell) != std::string_view::npos;
    };
    const bool isPhone = names("Phosh") || names("Lomiri") || plasma.starts_with("phone");
    return isPhone ? Shell::Phone : Shell::Desktop;
}

void WindowActivity::windowChanged(QWindow::Visibility visibility)
{
    if (visibility == QWindow::Hidden || visibility == QWindow::Minimized)
        resign();
}

void WindowActivity::applicationChanged(Qt::ApplicationState state)
{
    if (state == Qt::ApplicationSuspended || state == Qt::ApplicationHidden ||
        (state == Qt::ApplicationInactive && shell_ == Shell::Phone))
        resign();
}

void WindowActivity::resign()
{
    notificationCenter_.postNotificationName(applicationWillResignActiveNotification);
}

} // namespace skyflare
