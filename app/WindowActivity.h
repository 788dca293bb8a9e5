#pragma once

#include "platform/base/NotificationCenter.h"

#include <QObject>
#include <QWindow>

namespace skyflare {

/// Tells the app when it is no longer before the user, by posting
/// "UIApplicationWillResignActiveNotification": on a desktop when its window is hidden or minimised, on a
/// phone's shell also when another app comes to the front. Losing the keyboard alone does not count.
///
/// Threads: main. Borrows the window and the centre.
class WindowActivity final : public QObject {
    Q_OBJECT

public:
    enum class Shell { Desktop, Phone };

    WindowActivity(QWindow &window, NotificationCenter &notificationCenter, Shell shell);

    /// By XDG_CURRENT_DESKTOP and PLASMA_PLATFORM; each may be null.
    static Shell shellFor(const char *currentDesktop, const char *plasmaPlatform);

private:
    NotificationCenter &notificationCenter_;
    const Shell shell_;

    void windowChanged(QWindow::Visibility visibility);
    void applicationChanged(Qt::ApplicationState state);
    void resign();
};

} // namespace skyflare
