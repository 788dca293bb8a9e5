#include "ui/Window.h"

#include <QGuiApplication>
#include <QThreadPool>

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

namespace {

int warnings = 0; // of Qt and of QML: each is a fault

void countWarnings(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    if (type == QtWarningMsg || type == QtCriticalMsg)
        ++warnings;
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication app(argc, argv);
    qInstallMessageHandler(countWarnings);
    skyflare::prepareUserInterface();
    doctest::Context context(argc, argv);
    const int failed = context.run();
    // What the last test let go of.
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (warnings > 0)
        std::fprintf(stderr, "%d warnings of Qt\n", warnings);
    return failed != 0 || warnings > 0 ? 1 : 0;
}
