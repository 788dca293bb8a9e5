#pragma once

#include "app/AppActivity.h"

#include <QObject>
#include <QWindow>

namespace skyflare {

/// Tells the app's activity what becomes of its window: on a desktop whether it is hidden or minimised, on a
/// phone's shell also whether another app is in front. Losing the keyboard alone does not count.
///
/// Threads: main. Borrows the window and the activity.
class WindowActivity final : public QObject {
    Q_OBJECT

public:
    enum class Shell { Desktop, Phone };

    WindowActivity(QWindow &window, AppActivity &activity, Shell shell);

    /// By XDG_CURRENT_DESKTOP and PLASMA_PLATFORM; each may be null.
    static Shell shellFor(const char *currentDesktop, const char *plasmaPlatform);

    /// Sees what the user does to the window, and leaves it alone.
    bool eventFilter(QObject *window, QEvent *event) override;

private:
    using Reason = AppActivity::Reason;

    AppActivity &activity_;
    const Shell shell_;

    void windowChanged(QWindow::Visibility visibility);
    void applicationChanged(Qt::ApplicationState state);
    void tell(Reason reason, bool holds);
};

} // namespace skyflare
