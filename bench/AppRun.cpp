#include "bench/AppRun.h"

#include "app/Program.h"
#include "bench/CameraProgram.h"
#include "bench/ItemSearch.h"
#include "bench/Machine.h"
#include "platform/camera/GstSetup.h"
#include "ui/PreviewView.h"

#include <QQuickWindow>
#include <QTest>
#include <QTimer>
#include <cstdio>
#include <utility>

namespace skyflare::bench {

namespace {

/// Finds the camera that is measured with, whatever the machine has.
CameraFinder finderOf(const std::shared_ptr<CameraSource> &camera)
{
    return [camera](const std::string &name) -> Result<CameraChoice> {
        if (!camera)
            return findCamera(name);
        if (const auto ready = initialiseGStreamer(); !ready)
            return ready.error();
        return CameraChoice{.camera = camera};
    };
}

} // namespace

AppRun::AppRun(std::filesystem::path folder, Options options)
    : folder_(std::move(folder)), options_(std::move(options))
{
}

int AppRun::run()
{
    prepareSettings();
    AppOptions appOptions;
    appOptions.camera = "simulated"; // unless there is another to measure with
    appOptions.dataFolder = folder_;
    int argumentCount = 1;
    char name[] = "skyflare";
    char *arguments[] = {name, nullptr};
    Program program(appOptions, argumentCount, arguments, finderOf(options_.camera));
    qApp->installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &AppRun::becomeReady);
    const int status = program.run();
    return paintedAt_ > 0 ? status : 1;
}

void AppRun::prepareSettings() const
{
    QuietConsole console;
    UserDefaults defaults(folder_ / "config" / standardUserDefaultsFile, console);
    defaults.setObject(PropertyList("yes"), "alreadyLaunched");
    defaults.setFloat(options_.settings.sensivity, "sensivity");
    defaults.setDouble(options_.settings.frequency, "frequency");
}

QQuickWindow &AppRun::window() const
{
    require(window_ != nullptr, "the window has gone");
    return *window_;
}

void AppRun::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(&window(), key, modifiers);
}

void AppRun::click(const QString &name)
{
    const QQuickItem *const item = itemNamed(*window().contentItem(), name);
    require(item != nullptr && isSeen(*item), "what is to be clicked is not there");
    QTest::mouseClick(window_, Qt::LeftButton, {},
                      item->mapToScene(QRectF(QPointF(), item->size()).center()).toPoint());
}

void AppRun::awaitSight(Sight sight, std::function<void(double seenAt)> then)
{
    const std::scoped_lock lock(awaitedMutex_);
    awaited_.push_back({std::move(sight), std::move(then)});
}

void AppRun::doAfter(double seconds, std::function<void()> work)
{
    QTimer::singleShot(static_cast<int>(seconds * 1000), Qt::PreciseTimer, this, std::move(work));
}

bool AppRun::eventFilter(QObject *watched, QEvent *event)
{
    // Before the first frame is drawn, and as soon as there is something to look at.
    if (event->type() == QEvent::PlatformSurface && window_ == nullptr) {
        if (auto *const window = qobject_cast<QQuickWindow *>(watched))
            watch(*window);
    }
    return QObject::eventFilter(watched, event);
}

void AppRun::watch(QQuickWindow &window)
{
    window_ = &window;
    if (!options_.windowSize.isEmpty())
        window.resize(options_.windowSize);
    // Main waits while a frame begins, so that items may be looked at.
    connect(&window, &QQuickWindow::afterSynchronizing, this, &AppRun::frameBegan, Qt::DirectConnection);
    connect(&window, &QQuickWindow::frameSwapped, this, &AppRun::frameShown, Qt::DirectConnection);
}

void AppRun::frameBegan()
{
    if (paintedAt_ == 0)
        return;
    if (preview_ == nullptr)
        preview_ = qobject_cast<PreviewView *>(itemNamed(*window_->contentItem(), QStringLiteral("preview")));
    const qint64 picture = preview_ != nullptr ? preview_->picture().cacheKey() : 0;
    if (picture != 0 && picture != shown_)
        ++previews_;
    shown_ = picture;
    const std::scoped_lock lock(awaitedMutex_);
    for (Awaited &awaited : awaited_)
        awaited.isInFrame = awaited.sight(*window_->contentItem());
}

void AppRun::frameShown()
{
    if (paintedAt_ == 0) {
        paintedAt_ = now();
        QMetaObject::invokeMethod(this, &AppRun::becomeReady, Qt::QueuedConnection);
    } else if (shown_ != 0 && previewedAt_ == 0) {
        previewedAt_ = now();
        if (options_.previewed)
            QMetaObject::invokeMethod(
                this, [this] { options_.previewed(*this); }, Qt::QueuedConnection);
    }
    reportSights(now());
}

void AppRun::reportSights(double seenAt)
{
    const std::scoped_lock lock(awaitedMutex_);
    for (Awaited &awaited : awaited_) {
        if (awaited.isInFrame)
            QMetaObject::invokeMethod(
                this, [then = std::move(awaited.then), seenAt] { then(seenAt); }, Qt::QueuedConnection);
    }
    std::erase_if(awaited_, [](const Awaited &awaited) { return awaited.isInFrame; });
}

void AppRun::becomeReady()
{
    if (isReady_ || paintedAt_ == 0 || window_ == nullptr || !window_->isActive())
        return;
    isReady_ = true;
    if (options_.ready)
        options_.ready(*this);
}

Numbers measureInProcess(const std::string &self, std::vector<std::string> arguments,
                         const std::filesystem::path &folder)
{
    const auto file = folder / "numbers";
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    arguments.insert(arguments.begin(), self);
    arguments.insert(arguments.end(), {(folder / "app").string(), file.string()});
    require(runProgram(arguments, "/dev/null") >= 0, "a run of the app has failed");
    return readNumbers(file);
}

} // namespace skyflare::bench
