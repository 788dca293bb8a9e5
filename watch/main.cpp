#include "app/App.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/MainLoop.h"
#include "platform/camera/CameraChoice.h"
#include "platform/camera/CameraMonitor.h"
#include "platform/camera/FilmSource.h"
#include "platform/camera/GstCapture.h"
#include "platform/camera/SimulatedSkySource.h"
#include "platform/linux/FileSystemSpace.h"
#include "platform/linux/PicturesLibrary.h"
#include "platform/linux/ProgramFiles.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/SystemRandom.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/UserDirectories.h"
#include "platform/linux/V4l2Focus.h"
#include "platform/net/CurlTransport.h"
#include "programs/ProgramAnalytics.h"
#include "watch/AnalyticsInspection.h"
#include "watch/CameraList.h"
#include "watch/FilmTime.h"
#include "watch/JsonReport.h"
#include "watch/Options.h"
#include "watch/TextReport.h"
#include "watch/WatchRun.h"
#include "watch/WatchStore.h"

#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>

namespace skyflare {
namespace {

constexpr int done = 0;
constexpr int sourceFailed = 1;
constexpr int wrongUsage = 2;

int complain(int status, const std::string &message)
{
    std::fprintf(stderr, "skyflare-watch: %s\n", message.c_str());
    return status;
}

/// With --json standard output belongs to the objects; with --quiet there is no commentary.
WatchConsole::Streams streamsFor(const Options &options)
{
    const bool showsProgress = isatty(STDERR_FILENO) != 0 && !options.quiet && !options.json;
    std::FILE *const commentary = options.json ? stderr : stdout;
    return {.lines = options.quiet ? nullptr : commentary,
            .answers = commentary,
            .reports = stderr,
            .progress = showsProgress ? stderr : nullptr};
}

std::unique_ptr<WatchReport> reportFor(const Options &options, WatchConsole &console, const Clock &clock)
{
    if (options.json)
        return std::make_unique<JsonReport>(stdout);
    return std::make_unique<TextReport>(console, clock,
                                        options.film ? TextReport::Source::Film : TextReport::Source::Camera);
}

std::shared_ptr<FocusControl> openFocus(const std::string &path)
{
    return std::make_shared<V4l2Focus>(path);
}

UserDirectories directoriesFor(const Options &options)
{
    return options.dataFolder ? UserDirectories::under(*options.dataFolder) : UserDirectories::standard();
}

Deployment readDeployment(Console &console)
{
    return Deployment::read(ProgramFiles::standard().deployment, console);
}

/// One run: what it is made of, in the order in which the parts need each other.
class Program {
public:
    explicit Program(const Options &options);

    int run();

private:
    const Options &options_;
    const UserDirectories directories_;
    SystemClock clock_;
    WatchConsole console_;
    MainLoop loop_;
    TerminationSignals signals_; // before there is any other thread
    AsioQueues queues_;
    NotificationCenter notificationCenter_;
    UserDefaults defaults_;
    const FileSystemSpace freeSpace_;
    StorageRoom storageRoom_;
    CurlTransport transport_;
    std::unique_ptr<ProgramAnalytics> analytics_; ///< null: this run is not measured
    WatchStore store_;
    std::unique_ptr<WatchReport> report_;
    std::shared_ptr<WatchRun> run_;
    bool ended_ = false;

    void startAnalytics();
    Result<std::shared_ptr<CameraSource>> chosenSource();
    int prepareAndWatch();
    int watch(std::shared_ptr<CameraSource> camera, std::unique_ptr<FramesCsv> csv, PhotoExport *photoExport);
    void applyLevels(CaptureManager &manager) const;
    void stop();
    void end();
};

Program::Program(const Options &options)
    : options_(options),
      directories_(directoriesFor(options)),
      console_(streamsFor(options)),
      signals_([this] { loop_.async([this] { stop(); }); }),
      defaults_(directories_.config / standardUserDefaultsFile, console_),
      store_(directories_.data, queues_, console_),
      report_(reportFor(options, console_, clock_))
{
    App::setSharedServices({defaults_, notificationCenter_, console_});
}

void Program::stop()
{
    if (run_)
        run_->stop();
}

/// Lets go of everything that works beside main, the engine first, while main serves its loop; then the loop
/// ends.
void Program::end()
{
    ended_ = true;
    const auto closeQueues = [this] { queues_.closeThen([this] { loop_.quit(); }); };
    FIRAnalytics::applicationWillResignActive();
    if (analytics_)
        analytics_->close(loop_, closeQueues);
    else
        closeQueues();
}

void Program::startAnalytics()
{
    analytics_ = std::make_unique<ProgramAnalytics>(
        ProgramAnalytics::Services{queues_, clock_, console_, transport_, notificationCenter_},
        ProgramAnalytics::places(directories_, readDeployment(console_)), options_.launchSwitches);
    analytics_->start();
    // There is no window: it is before the user as long as it runs.
    FIRAnalytics::applicationDidBecomeActive();
}

int Program::run()
{
    if (!options_.noAnalytics)
        startAnalytics();
    const int status = prepareAndWatch();
    if (!ended_) { // it came to no run
        end();
        loop_.run();
    }
    return status;
}

Result<std::shared_ptr<CameraSource>> Program::chosenSource()
{
    if (options_.film)
        return std::shared_ptr<CameraSource>(std::make_shared<FilmSource>(*options_.film, Pacing::LockStep));
    const auto choice = chooseCamera(options_.camera, openFocus);
    if (!choice)
        return choice.error();
    if (choice->kind == CameraChoice::Kind::SimulatedInstead)
        console_.printLine("No camera was found: this is the simulated sky.");
    return choice->camera;
}

int Program::prepareAndWatch()
{
    auto camera = chosenSource();
    if (!camera)
        return complain(sourceFailed, camera.error().message);
    // Main serves no loop yet: it may wait for the file system, as it does for the store.
    if (storageLevel(storageRoom_, freeSpace_.bytesAvailable(directories_.data)) == StorageLevel::Full)
        return complain(sourceFailed, std::string(noRoom));
    if (const auto loaded = store_.load(); !loaded)
        return complain(sourceFailed, unresolvedError(loaded.error()));

    std::unique_ptr<FramesCsv> csv;
    if (options_.framesCsv) {
        auto opened = FramesCsv::open(*options_.framesCsv);
        if (!opened)
            return complain(sourceFailed, opened.error().message);
        csv = std::move(*opened);
    }
    std::unique_ptr<PhotoExport> photoExport;
    if (options_.exportFolder) {
        auto opened = PhotoExport::into(*options_.exportFolder, queues_, console_);
        if (!opened)
            return complain(sourceFailed, opened.error().message);
        photoExport = std::move(*opened);
    }
    const int status = watch(std::move(*camera), std::move(csv), photoExport.get());
    if (photoExport && !options_.quiet)
        console_.printAnswer("The photos are in " + photoExport->folder().string());
    return status;
}

int Program::watch(std::shared_ptr<CameraSource> camera, std::unique_ptr<FramesCsv> csv,
                   PhotoExport *photoExport)
{
    const bool isFilm = camera->pacing() == Pacing::LockStep;
    FilmTime filmTime(
        loop_, [this] { queues_.drainGlobal(); }, clock_.secondsSince1970());
    const Clock &clock = isFilm ? static_cast<const Clock &>(filmTime) : clock_;
    SerialQueue &mainQueue = isFilm ? filmTime.queue() : static_cast<SerialQueue &>(loop_);

    GstCapture framework(
        {.queues = queues_, .camera = std::move(camera), .gate = isFilm ? &filmTime : nullptr});
    const PhotoDataManager photos({.delegate = store_,
                                   .notificationCenter = notificationCenter_,
                                   .clock = clock,
                                   .console = console_,
                                   .storageRoom = &storageRoom_});
    FrameTally tally(clock, std::move(csv));
    LogManager logManager(clock, console_);
    PicturesLibrary library(directories_.pictures, queues_.globalUserInitiated());
    AutoSave autoSave({library, console_, App::shared(), logManager});
    CommittedPhotos committedPhotos(store_.persistentContainer().viewContext());

    const std::chrono::duration<double> armAfter(options_.armAfterSeconds);
    auto manager = CaptureManager::make(
        {.mainQueue = mainQueue,
         .queues = queues_,
         .framework = framework,
         .clock = clock,
         .console = console_,
         .app = App::shared(),
         .photoDataManager = photos,
         .frameMeasured = [&tally](const FrameMeasurement &measured) { tally.didMeasure(measured); },
         .armingDelay = std::chrono::duration_cast<std::chrono::nanoseconds>(armAfter)});
    applyLevels(*manager);

    // In real time, for a film too: disks know no other.
    const auto storage = std::make_shared<StorageWatch>(StorageWatch::Services{
        loop_, queues_, notificationCenter_, freeSpace_, storageRoom_, directories_.data});
    run_ = std::make_shared<WatchRun>(WatchRun::Services{.captureManager = manager,
                                                         .mainQueue = mainQueue,
                                                         .queues = queues_,
                                                         .drainStills = [this] { queues_.drainGlobal(); },
                                                         .clock = clock,
                                                         .realClock = clock_,
                                                         .console = console_,
                                                         .report = *report_,
                                                         .photoDataManager = photos,
                                                         .committedPhotos = committedPhotos,
                                                         .tally = tally,
                                                         .logManager = logManager,
                                                         .autoSave = autoSave,
                                                         .storage = storage,
                                                         .photoExport = photoExport,
                                                         .finished = [this] { end(); }},
                                      WatchRun::Limits{options_.durationSeconds, options_.photos});
    run_->start();
    loop_.run();

    const int status = run_->failed() ? sourceFailed : done;
    run_.reset();
    return status;
}

/// For this run alone; the stored settings stay as they are.
void Program::applyLevels(CaptureManager &manager) const
{
    if (options_.sensitivity)
        manager.setBrightnessThreshold(brightnessThreshold(*options_.sensitivity));
    if (options_.frequency)
        manager.setCaptureInterval(captureInterval(*options_.frequency));
}

int listCameras(const Options &options)
{
    const CameraMonitor &monitor = CameraMonitor::shared(openFocus);
    std::vector<std::shared_ptr<const CaptureDevice>> cameras;
    for (const auto &camera : monitor.cameras())
        cameras.push_back(camera);
    cameras.push_back(std::make_shared<SimulatedSkySource>());
    if (!options.json) {
        std::fputs(cameraList(cameras).c_str(), stdout);
    } else {
        for (const auto &camera : cameras)
            JsonReport(stdout).camera(*camera);
    }
    return monitor.outcome() ? done : complain(sourceFailed, monitor.outcome().error().message);
}

int showAnalytics(const Options &options)
{
    const SystemClock clock;
    WatchConsole console({.lines = nullptr});
    SystemRandom random;
    AnalyticsInspection inspection({.clock = clock, .console = console, .random = random, .answers = stdout},
                                   ProgramAnalytics::places(directoriesFor(options), readDeployment(console)),
                                   options.json ? AnalyticsInspection::Form::Json
                                                : AnalyticsInspection::Form::Text);
    const auto printed = options.analyticsStatus ? inspection.printStatus() : inspection.printEvents();
    if (std::fflush(stdout) != 0)
        return sourceFailed;
    return printed ? done : complain(sourceFailed, printed.error().message);
}

int start(std::span<const char *const> arguments)
{
    const auto options = parseOptions(arguments);
    if (!options)
        return complain(wrongUsage, options.error().message);
    if (options->help)
        return std::fputs(usage().c_str(), stdout) < 0 ? sourceFailed : done;
    if (options->version)
        return std::puts("skyflare-watch " SKYFLARE_VERSION) < 0 ? sourceFailed : done;
    if (options->listCameras)
        return listCameras(*options);
    if (options->analyticsStatus || options->analyticsShow)
        return showAnalytics(*options);
    return Program(*options).run();
}

} // namespace
} // namespace skyflare

int main(int argc, char **argv)
{
    std::setlocale(LC_CTYPE, ""); // what the terminal can show; numbers keep their point
    std::signal(SIGPIPE, SIG_IGN);
    setenv("LIBCAMERA_LOG_LEVELS", "*:ERROR", 0); // it reports its every start otherwise; before any thread
    return skyflare::start(
        std::span<const char *const>(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0)));
}
