#include "platform/base/Localization.h"
#include "platform/base/StandardConsole.h"
#include "tests/screenshots/ScreenStates.h"
#include "tests/screenshots/TextFit.h"
#include "ui/Window.h"

#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTest>
#include <QTimer>
#include <array>
#include <cstdio>

// screenshots FOLDER [WORD]: writes each screen in each state, in every size, dark and light, into FOLDER;
// with WORD those alone whose name has it. Needs no display.
// screenshots --texts [WORD]: writes nothing, but says which texts do not fit, in every language and size.

namespace {

using namespace skyflare;

struct Size {
    const char *name;
    QSize pixels;
};

constexpr std::array<Size, 4> sizes{{
    {"360x640", {360, 640}},
    {"390x844", {390, 844}},
    {"844x390", {844, 390}},
    {"1280x800", {1280, 800}},
}};

constexpr std::array languages{"de", "en", "es", "ja", "tr"};

void setLanguage(const std::string &language)
{
    StandardConsole console;
    const auto tables = QCoreApplication::applicationDirPath() + "/localization";
    Localization::setShared(Localization::load(tables.toStdString(), std::array{language}, console));
}

/// Runs the event loop until what moves has come to rest.
void settle()
{
    constexpr int restMs = 500; // longer than any transition
    QEventLoop loop;
    QTimer frames;
    QObject::connect(&frames, &QTimer::timeout, [] { showLivePicture(); });
    frames.start(restMs / 10);
    QTimer::singleShot(restMs, &loop, &QEventLoop::quit);
    loop.exec();
}

bool write(const ScreenState &state, const Size &size, ColorScheme scheme, const QDir &folder)
{
    setLanguage(state.language);
    Window window;
    window.theme().setColorScheme(scheme);
    window.quickWindow().resize(size.pixels);
    window.setRootViewController(state.makeRoot());
    window.makeKeyAndVisible();
    settle();
    for (const int key : state.keys)
        QTest::keyClick(&window.quickWindow(), static_cast<Qt::Key>(key));
    if (!state.keys.empty())
        settle();
    const QString name = QString("%1-%2-%3.png")
                             .arg(QString::fromStdString(state.name), size.name,
                                  scheme == ColorScheme::Light ? "light" : "dark");
    const bool isWritten = window.quickWindow().grabWindow().save(folder.filePath(name));
    std::fprintf(isWritten ? stdout : stderr, "%s%s\n",
                 isWritten ? "" : "not written: ", qUtf8Printable(name));
    return isWritten;
}

/// Says which texts of that state do not fit; whether all do.
bool checkTexts(const ScreenState &state, const std::string &language, const Size &size)
{
    setLanguage(language);
    Window window;
    window.quickWindow().resize(size.pixels);
    window.setRootViewController(state.makeRoot());
    window.makeKeyAndVisible();
    QCoreApplication::processEvents();
    static_cast<void>(window.quickWindow().grabWindow()); // lays out all that is to be drawn
    const auto faults = textsThatDoNotFit(window.quickWindow());
    for (const std::string &fault : faults)
        std::fprintf(stderr, "%s, %s, %s: %s\n", state.name.c_str(), language.c_str(), size.name,
                     fault.c_str());
    return faults.empty();
}

bool checkAllTexts(const QString &word)
{
    bool isAllFitting = true;
    for (const ScreenState &state : screenStates()) {
        // The others are the same in another language, or with another focus.
        if (state.language != "en" || !state.keys.empty() ||
            !QString::fromStdString(state.name).contains(word))
            continue;
        for (const std::string language : languages)
            for (const Size &size : sizes)
                isAllFitting = checkTexts(state, language, size) && isAllFitting;
    }
    return isAllFitting;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication app(argc, argv);
    prepareUserInterface();
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--texts")
        return checkAllTexts(arguments.value(2)) ? 0 : 1;
    if (arguments.size() < 2 || !QDir().mkpath(arguments[1])) {
        std::fprintf(stderr, "screenshots FOLDER [WORD]: the folder cannot be made\n");
        return 2;
    }
    const QString word = arguments.value(2); // empty: all
    bool isAllWritten = true;
    for (const ScreenState &state : screenStates()) {
        if (!QString::fromStdString(state.name).contains(word))
            continue;
        for (const Size &size : sizes) {
            for (const ColorScheme scheme : {ColorScheme::Dark, ColorScheme::Light})
                isAllWritten = write(state, size, scheme, QDir(arguments[1])) && isAllWritten;
        }
    }
    return isAllWritten ? 0 : 1;
}
