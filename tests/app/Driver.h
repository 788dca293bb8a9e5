#pragma once

#include "tests/app/Commands.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

namespace skyflare {

/// Uses the app's window as a person does, by the commands that come line by line on standard input. Answers
/// each with a line of standard output that begins with "driver: ok" or "driver: failed".
///
/// A command is tried until it can be done, and fails where that takes too long. The event loop is the app's
/// own all the while.
///
/// Threads: main, while there is a QGuiApplication.
class Driver final {
public:
    Driver();

private:
    QSocketNotifier inputReady_;
    Attempt attempt_; ///< null while it is being tried
    QElapsedTimer waiting_;
    QTimer again_; ///< runs while there is a command to be done

    void begin();
    void tryOnce();
    void answer(const QString &text);
};

} // namespace skyflare
