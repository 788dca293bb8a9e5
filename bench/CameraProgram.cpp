#include "bench/CameraProgram.h"

#include <cstdio>
#include <utility>

namespace skyflare::bench {

namespace {

std::chrono::nanoseconds inNanoseconds(double seconds)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

} // namespace

void QuietConsole::reportLine(std::string_view line)
{
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

CameraProgram::CameraProgram(Options options)
    : options_(std::move(options)),
      defaults_(options_.folder / standardUserDefaultsFile, console_),
      app_({defaults_, notificationCenter_, console_}),
      store_(options_.folder, queues_, console_),
      framework_({.queues = queues_, .camera = options_.camera})
{
    if (options_.photoCommitted)
        observation_ = notificationCenter_.addObserver(countDidChange, options_.photoCommitted);
    manager_ = CaptureManager::make({.mainQueue = loop_,
                                     .queues = queues_,
                                     .framework = framework_,
                                     .clock = clock_,
                                     .console = console_,
                                     .app = app_,
                                     .photoDataManager = photos(),
                                     .frameMeasured = options_.frameMeasured});
    manager_->setCaptureInterval(0);
    manager_->setBrightnessThreshold(options_.brightnessThreshold);
}

PhotoDataManager CameraProgram::photos()
{
    return PhotoDataManager({store_, notificationCenter_, clock_, console_});
}

void CameraProgram::doAfter(double seconds, std::function<void()> work)
{
    loop_.asyncAfter(inNanoseconds(seconds), std::move(work));
}

Result<> CameraProgram::runFor(double seconds)
{
    if (const auto loaded = store_.load(); !loaded)
        return loaded.error();
    manager_->setViewController(weak_from_this());
    manager_->start();
    doAfter(seconds, [this] {
        manager_->setRunningStatus(false);
        stopWhenSettled(300);
    });
    loop_.run();
    if (failure_)
        return *failure_;
    return {};
}

void CameraProgram::stopWhenSettled(int turnsLeft)
{
    if (turnsLeft == 0 || options_.isSettled())
        manager_->captureSession()->stopRunning();
    else
        doAfter(0.1, [this, turnsLeft] { stopWhenSettled(turnsLeft - 1); });
}

void CameraProgram::sessionDidChange(const SessionEvent &event)
{
    using Kind = SessionEvent::Kind;
    if (event.kind == Kind::Lost || event.kind == Kind::Failed || event.kind == Kind::Ended) {
        failure_ = Error{"bench", 0, "the camera has stopped by itself: " + event.message};
        manager_->captureSession()->stopRunning();
    } else if (event.kind == Kind::Stopped) {
        finish();
    }
}

void CameraProgram::finish()
{
    statistics_ = manager_->captureSession()->frameStatistics();
    // Closes only when the stills on their way are stored; main serves its loop meanwhile.
    queues_.closeThen([this] { loop_.quit(); });
}

} // namespace skyflare::bench
