#include "app/WindowActivity.h"

#include <QEvent>
#include <QGuiApplication>
#include <string_view>

namespace skyflare {

WindowActivity::WindowActivity(QWindow &window, AppActivity &activity, Shell shell)
    : activity_(activity), shell_(shell)
{
    connect(&window, &QWindow::visibilityChanged, this, &WindowActivity::windowChanged);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &WindowActivity::applicationChanged);
    window.installEventFilter(this);
    windowChanged(window.visibility());
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

bool WindowActivity::eventFilter(QObject *window, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
        activity_.userIsHere();
        break;
    default:
        break;
    }
    return QObject::eventFilter(window, event);
}

void WindowActivity::windowChanged(QWindow::Visibility visibility)
{
    tell(Reason::WindowHidden, visibility == QWindow::Hidden || visibility == QWindow::Minimized);
}

void WindowActivity::applicationChanged(Qt::ApplicationState state)
{
    tell(Reason::OtherAppInFront, state == Qt::ApplicationSuspended || state == Qt::ApplicationHidden ||
                                      (state == Qt::ApplicationInactive && shell_ == Shell::Phone));
}

void WindowActivity::tell(Reason reason, bool holds)
{
    if (holds)
        activity_.arises(reason);
    else
        activity_.goes(reason);
}

} // namespace skyflare
