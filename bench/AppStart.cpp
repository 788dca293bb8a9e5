// How long the app takes from the start of its process to its first frame, and to the first frame with a live
// picture, where its user presses Space as soon as the window takes keys.
//
// Each start is a process of its own, and counts from just before it is made. Warm: one start before those
// that count, in the same folder.

#include "bench/AppRun.h"
#include "bench/Machine.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRectangleNode>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace skyflare::bench {

namespace {

constexpr int starts = 15;

/// What a window costs that shows next to nothing.
class BareItem final : public QQuickItem {
public:
    explicit BareItem(QQuickItem *parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData * /*data*/) override
    {
        if (node != nullptr)
            return node;
        auto *const rectangle = window()->createRectangleNode();
        rectangle->setRect(boundingRect());
        rectangle->setColor(Qt::darkBlue);
        return rectangle;
    }
};

int startBare(const std::filesystem::path &file)
{
    int argumentCount = 1;
    char name[] = "bare";
    char *arguments[] = {name, nullptr};
    const QGuiApplication application(argumentCount, arguments);
    QQuickWindow window;
    window.resize(390, 844);
    BareItem item(window.contentItem());
    item.setSize({390, 844});
    std::atomic<double> paintedAt = 0;
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window,
        [&paintedAt] {
            paintedAt = now();
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        },
        Qt::DirectConnection);
    window.show();
    const int status = QGuiApplication::exec();
    writeNumbers(file, {{"painted", paintedAt}});
    return status;
}

int startApp(const std::filesystem::path &folder, const std::filesystem::path &file)
{
    AppRun app(folder, {.ready = [](AppRun &run) { run.pressSpace(); },
                        .previewed = [](AppRun &) { QCoreApplication::quit(); }});
    const int status = app.run();
    writeNumbers(file, {{"painted", app.paintedAt()}, {"previewed", app.previewedAt()}});
    return status;
}

/// Medians, in seconds from the start of the process.
struct Starts {
    double painted = 0;
    double previewed = 0;
    double barePainted = 0;
};

Starts measureStarts(const std::string &self)
{
    const WorkFolder folder;
    std::vector<double> painted;
    std::vector<double> previewed;
    std::vector<double> bare;
    for (int start = 0; start <= starts; ++start) {
        const double bareStart = now();
        const Numbers plain = measureInProcess(self, {"--bare"}, folder.path());
        const double appStart = now();
        const Numbers app = measureInProcess(self, {"--app"}, folder.path());
        if (start == 0)
            continue; // warms
        bare.push_back(plain.at("painted") - bareStart);
        painted.push_back(app.at("painted") - appStart);
        previewed.push_back(app.at("previewed") - appStart);
    }
    return {median(painted), median(previewed), median(bare)};
}

void addRows(Table &table, const std::string &where, const Starts &measured)
{
    const std::string bare = "a window with one rectangle: " + duration(measured.barePainted);
    table.add({.what = "start of the process to the first frame, " + where,
               .measured = duration(measured.painted),
               .yardstick = bare,
               .ratio = ratio(measured.painted / measured.barePainted),
               .reach = "<= 350 ms",
               .isReached = measured.painted <= 0.350});
    table.add({.what = "start of the process to the first frame with a live picture, " + where,
               .measured = duration(measured.previewed),
               .yardstick = bare,
               .ratio = ratio(measured.previewed / measured.barePainted),
               .reach = "<= 700 ms",
               .isReached = measured.previewed <= 0.700});
}

int measure(const std::string &self)
{
    Table table("The app's start, warm, the middle of " + std::to_string(starts));
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    addRows(table, "no display, software rendering", measureStarts(self));
    if (std::getenv("DISPLAY") != nullptr) { // bench/run brings a virtual one up
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        addRows(table, "X11, software rendering", measureStarts(self));
        unsetenv("QT_QUICK_BACKEND");
        addRows(table, "X11, OpenGL", measureStarts(self));
    }
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--bare") == 0)
        return skyflare::bench::startBare(argv[3]);
    if (argc == 4 && std::strcmp(argv[1], "--app") == 0)
        return skyflare::bench::startApp(argv[2], argv[3]);
    return skyflare::bench::measure(argv[0]);
}
