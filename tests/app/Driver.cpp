#include "tests/app/Driver.h"

#include "tests/app/Screen.h"

#include <unistd.h>

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
    QObject::connect(&inputReady_, &QSocketNotifier::activated, &inputReady_, [this] { read(); });
}

void Driver::read()
{
    char block[4096];
    const ssize_t count = ::read(STDIN_FILENO, block, sizeof block);
    if (count <= 0) // whoever spoke has gone
        return inputReady_.setEnabled(false);
    input_.append(block, count);
    next();
}

/// One after the other: whoever speaks need not wait for the answers.
void Driver::next()
{
    const qsizetype end = input_.indexOf('\n');
    if (again_.isActive() || end < 0)
        return;
    const QString line = QString::fromUtf8(input_.left(end));
    input_.remove(0, end + 1);
    begin(line);
}

void Driver::begin(const QString &line)
{
    attempt_ = attemptFor(line);
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
    next();
}

} // namespace skyflare
