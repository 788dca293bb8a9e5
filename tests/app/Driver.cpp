#include "tests/app/Driver.h"

#include "tests/app/Screen.h"

#include <unistd.h>

#include <string>
#include <tuple>
#include <utility>

namespace skyflare {

namespace {

constexpr int pauseMs = 10;
constexpr qint64 patienceMs = 120000; // for a sanitizer on a machine that does other things too

} // namespace

Driver::Driver() : inputReady_(STDIN_FILENO, QSocketNotifier::Read)
{
    again_.setInterval(pauseMs);
    QObject::connect(&again_, &QTimer::timeout, &again_, [this] { tryOnce(); });
    QObject::connect(&inputReady_, &QSocketNotifier::activated, &inputReady_, [this] { begin(); });
}

/// Takes one line; what follows it stays where it is until this is answered.
void Driver::begin()
{
    inputReady_.setEnabled(false);
    std::string line;
    char next = 0;
    while (::read(STDIN_FILENO, &next, 1) == 1 && next != '\n')
        line += next;
    if (next != '\n') // whoever spoke has gone
        return;
    attempt_ = attemptFor(QString::fromStdString(line));
    if (!attempt_)
        return answer("failed: there is no such command");
    waiting_.start();
    again_.start();
    tryOnce();
}

void Driver::tryOnce()
{
    Attempt attempt = std::exchange(attempt_, nullptr); // a click runs the event loop
    if (!attempt)
        return;
    if (const auto done = attempt())
        answer("ok " + *done);
    else if (waiting_.elapsed() > patienceMs)
        answer("failed: in vain; seen are " + Screen::everything());
    else
        attempt_ = std::move(attempt);
}

void Driver::answer(const QString &text)
{
    again_.stop();
    const QByteArray line = "driver: " + text.simplified().toUtf8() + '\n';
    std::ignore = ::write(STDOUT_FILENO, line.constData(), static_cast<std::size_t>(line.size()));
    inputReady_.setEnabled(true);
}

} // namespace skyflare
