// How soon the app's window shows its gallery of 20 photos of 12 megapixels, one of them, its settings, and
// another language.
//
// From the tap or the key to the frame that shows it. Each opening is in a process of its own.

#include "bench/AppRun.h"
#include "bench/CameraProgram.h"
#include "bench/ItemSearch.h"
#include "bench/Machine.h"
#include "bench/PhotoYardsticks.h"
#include "bench/PngPictures.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/base/Localization.h"
#include "platform/image/Image.h"
#include "platform/image/PngEncoder.h"
#include "screens/gallery/ZoomablePhoto.h"
#include "store/PhotoDataManager.h"
#include "ui/PhotoView.h"
#include "watch/WatchStore.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace skyflare::bench {

namespace {

constexpr int photoCount = 20;
constexpr int rounds = 7;
constexpr double restSeconds = 1; ///< between what is measured, so that nothing is left to be done

std::filesystem::path thumbnailsIn(const std::filesystem::path &appFolder)
{
    return appFolder / "cache" / "thumbnails";
}

/// As if the app had caught them.
void storePhotos(const std::filesystem::path &appFolder)
{
    const VideoFrame frame = nightFrame();
    const Image photo = Image::fromData(*encodePng(frame))
                            ->withReduced(std::make_shared<ReducedInMemory>(*encodeReduced(frame)));
    QuietConsole console;
    AsioQueues queues;
    ThumbnailCache thumbnails(thumbnailsIn(appFolder), queues.globalUserInitiated());
    WatchStore store(appFolder / "data", queues, console);
    NotificationCenter notificationCenter;
    const SystemClock clock;
    require(bool(store.load()), "the store can be opened");
    PhotoDataManager photos({store, notificationCenter, clock, console, &thumbnails});
    for (int number = 0; number < photoCount; ++number)
        photos.saveImage(photo);
    require(photos.photoCount() == photoCount, "the photos are stored");
}

// --- What is seen

AppRun::Sight seenItem(const QString &name)
{
    return [name](QQuickItem &content) {
        const QQuickItem *const item = itemNamed(content, name);
        return item != nullptr && isSeen(*item);
    };
}

/// Whether it has as many pixels as the screen has there: a coarser picture comes first.
bool isSharp(const QImage &picture, QSizeF seen, const QQuickItem &item)
{
    const double ratio = item.window()->effectiveDevicePixelRatio();
    return picture.width() >= std::floor(seen.width() * ratio) &&
           picture.height() >= std::floor(seen.height() * ratio);
}

bool areThumbnailsSeen(QQuickItem &content)
{
    int sharp = 0;
    visitItems(content, [&sharp](QQuickItem &cell) {
        if (cell.objectName() != "PhotoCell" || !isSeen(cell))
            return;
        visitItems(cell, [&sharp](QQuickItem &item) {
            const auto *const view = qobject_cast<PhotoView *>(&item);
            if (view != nullptr && isSharp(view->picture(), view->size(), *view))
                ++sharp;
        });
    });
    return sharp == photoCount;
}

const ZoomablePhoto *shownPhoto(QQuickItem &content)
{
    const auto *const photo =
        qobject_cast<ZoomablePhoto *>(itemNamed(content, QStringLiteral("imageContainer")));
    return photo != nullptr && isSeen(*photo) && !photo->picture().isNull() ? photo : nullptr;
}

bool isPhotoSeen(QQuickItem &content)
{
    return shownPhoto(content) != nullptr;
}

bool isPhotoSharp(QQuickItem &content)
{
    const ZoomablePhoto *const photo = shownPhoto(content);
    return photo != nullptr && isSharp(photo->picture(), photo->photoRect().size(), *photo);
}

// --- What the user does, each in a process of its own

enum class Cached { No, Yes };

/// The last photo is tapped, then the first in the grid.
class GalleryVisit {
public:
    GalleryVisit(std::filesystem::path folder, Cached cached) : folder_(std::move(folder)), cached_(cached) {}

    void begin(AppRun &run)
    {
        const double start = now();
        require(!run.window().grabWindow().isNull(), "the window can be painted");
        numbers_["wholePaint"] = now() - start;
        if (cached_ == Cached::No)
            std::filesystem::remove_all(thumbnailsIn(folder_));
        forgetPeak();
        numbers_["memoryBefore"] = static_cast<double>(currentMemory());
        begun_ = now();
        run.awaitSight(seenItem(QStringLiteral("collectionView")), keep("painted"));
        run.awaitSight(&areThumbnailsSeen, [this, &run](double seenAt) {
            keep("thumbnails")(seenAt);
            run.doAfter(restSeconds, [this, &run] { openPhoto(run); });
        });
        run.click(QStringLiteral("lastPhotoButton"));
    }
    [[nodiscard]] const Numbers &numbers() const { return numbers_; }

private:
    void openPhoto(AppRun &run)
    {
        numbers_["memory"] = static_cast<double>(peakMemory());
        begun_ = now();
        run.awaitSight(&isPhotoSeen, keep("photoPainted"));
        run.awaitSight(&isPhotoSharp, [this](double seenAt) {
            keep("photoSharp")(seenAt);
            QCoreApplication::quit();
        });
        run.click(QStringLiteral("PhotoCell"));
    }
    std::function<void(double seenAt)> keep(const char *name)
    {
        return [this, name](double seenAt) { numbers_[name] = seenAt - begun_; };
    }

    const std::filesystem::path folder_;
    const Cached cached_;
    double begun_ = 0;
    Numbers numbers_;
};

int visitGallery(const std::filesystem::path &folder, const std::filesystem::path &file, QSize size,
                 Cached cached)
{
    GalleryVisit visit(folder, cached);
    AppRun app(folder, {.windowSize = size, .ready = [&visit](AppRun &run) {
                            run.doAfter(restSeconds, [&] { visit.begin(run); });
                        }});
    const int status = app.run();
    writeNumbers(file, visit.numbers());
    return status;
}

int openSettings(const std::filesystem::path &folder, const std::filesystem::path &file)
{
    Numbers numbers;
    const auto begin = [&numbers](AppRun &run) {
        const double start = now();
        require(!run.window().grabWindow().isNull(), "the window can be painted");
        const double begun = now();
        numbers["wholePaint"] = begun - start;
        run.awaitSight(seenItem(QStringLiteral("titleLabel")), [&numbers, begun](double seenAt) {
            numbers["painted"] = seenAt - begun;
            QCoreApplication::quit();
        });
        run.press(Qt::Key_Comma, Qt::ControlModifier);
    };
    AppRun app(folder, {.ready = [&begin](AppRun &run) { run.doAfter(restSeconds, [&] { begin(run); }); }});
    const int status = app.run();
    writeNumbers(file, numbers);
    return status;
}

int startInLanguage(const std::filesystem::path &folder, const std::filesystem::path &file)
{
    AppRun app(folder, {.ready = [](AppRun &) { QCoreApplication::quit(); }});
    const int status = app.run();
    require(Localization::shared().language() == std::getenv("LANGUAGE"), "the app speaks that language");
    writeNumbers(file, {{"painted", app.paintedAt()}});
    return status;
}

// --- The tables

using Runs = std::map<std::string, std::vector<double>>;

void add(Runs &runs, const Numbers &measured)
{
    for (const auto &[name, value] : measured)
        runs[name].push_back(value);
}

Runs visits(const std::string &self, const std::filesystem::path &folder, QSize size, const char *cached)
{
    Runs runs;
    for (int round = 0; round < rounds; ++round)
        add(runs, measureInProcess(
                      self, {cached, std::to_string(size.width()), std::to_string(size.height())}, folder));
    return runs;
}

void addRow(Table &table, const std::string &what, const std::vector<double> &seconds,
            const std::string &yardstick, double yardstickSeconds, double reach)
{
    const double measured = median(seconds);
    table.add({.what = what,
               .measured = duration(measured),
               .yardstick = yardstick + ": " + duration(yardstickSeconds),
               .ratio = ratio(measured / yardstickSeconds),
               .reach = "<= " + duration(reach),
               .isReached = measured <= reach});
}

struct Yardsticks {
    double copies = 0; ///< as many of them, on as many threads as the app has
    double photos = 0;
    double photo = 0; ///< one
};

void addVisits(Table &table, const std::string &self, const std::filesystem::path &folder, QSize size,
               const std::string &where, const Yardsticks &bare)
{
    const Runs cached = visits(self, folder, size, "--cached");
    const Runs anew = visits(self, folder, size, "--uncached");
    addRow(table, "tap to the gallery's first paint, " + where, cached.at("painted"),
           "painting the whole window once", median(cached.at("wholePaint")), 0.1);
    addRow(table, "to all 20 thumbnails, of photos that the app has caught", cached.at("thumbnails"),
           "libjpeg, the copies whole", bare.copies, 0.3);
    addRow(table, "the same, none in the cache", anew.at("thumbnails"), "libspng, the photos whole",
           bare.photos, 2.5);
    const auto memory = static_cast<std::uint64_t>(
        std::max(std::ranges::max(cached.at("memory")), std::ranges::max(anew.at("memory"))));
    table.add(
        {.what = "most memory meanwhile",
         .measured = megabytes(memory),
         .yardstick = "before: " + megabytes(static_cast<std::uint64_t>(median(anew.at("memoryBefore")))),
         .reach = "<= 250 MB",
         .isReached = memory <= 250'000'000});
    addRow(table, "tap to a photo's first picture", cached.at("photoPainted"),
           "painting the whole window once", median(cached.at("wholePaint")), 0.1);
    addRow(table, "to the photo as sharp as the screen", cached.at("photoSharp"), "libspng, the photo whole",
           bare.photo, 0.35);
}

void addSettings(Table &table, const std::string &self, const std::filesystem::path &folder)
{
    Runs runs;
    for (int round = 0; round < rounds; ++round)
        add(runs, measureInProcess(self, {"--settings"}, folder));
    addRow(table, "key to the settings' first paint", runs.at("painted"), "painting the whole window once",
           median(runs.at("wholePaint")), 0.1);
}

/// A language is changed on the desktop; the app speaks it when it is started again.
void addLanguage(Table &table, const std::string &self, const std::filesystem::path &folder)
{
    std::map<std::string, std::vector<double>> starts;
    for (int round = 0; round <= rounds; ++round) {
        for (const auto &[language, locale] : {std::pair{"en", "en_GB.UTF-8"}, std::pair{"de", "de_DE.UTF-8"},
                                               std::pair{"ja", "ja_JP.UTF-8"}}) {
            setenv("LANGUAGE", language, 1);
            setenv("LC_ALL", locale, 1);
            const double start = now();
            const double painted = measureInProcess(self, {"--start"}, folder).at("painted") - start;
            if (round > 0) // the first warms
                starts[language].push_back(painted);
        }
    }
    const double english = median(starts["en"]);
    for (const auto &[language, name] : {std::pair{"de", "German"}, std::pair{"ja", "Japanese"}}) {
        const double more = median(starts[language]) - english;
        table.add({.what = std::string("what a start in ") + name + " takes longer, to its first paint",
                   .measured = more > 0 ? duration(more) : "nothing",
                   .yardstick = "a start in English: " + duration(english),
                   .reach = "<= 100 ms",
                   .isReached = more <= 0.1});
    }
}

int measure(const std::string &self)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_QUICK_BACKEND", "software", 1);
    const WorkFolder folder;
    storePhotos(folder.path() / "app");
    const VideoFrame frame = nightFrame();
    const Bytes png = *encodePng(frame);
    const auto copy = *encodeReduced(frame);
    const Yardsticks bare{.copies = decodingCopies(*copy, photoCount),
                          .photos = decodingPhotos(png, photoCount),
                          .photo = decodingPhotos(png, 1)};
    Table table("The app with 20 photos of 12 MP");
    addVisits(table, self, folder.path(), {1280, 800}, "1280 × 800", bare);
    setenv("QT_SCALE_FACTOR", "3", 1);
    addVisits(table, self, folder.path(), {390, 844}, "a phone's 1170 × 2532", bare);
    unsetenv("QT_SCALE_FACTOR");
    addSettings(table, self, folder.path());
    addLanguage(table, self, folder.path());
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main(int argc, char **argv)
{
    using namespace skyflare::bench;
    const auto is = [&](int count, const char *name) {
        return argc == count && std::strcmp(argv[1], name) == 0;
    };
    if (is(6, "--cached") || is(6, "--uncached"))
        return visitGallery(argv[4], argv[5], QSize(std::atoi(argv[2]), std::atoi(argv[3])),
                            is(6, "--cached") ? Cached::Yes : Cached::No);
    if (is(4, "--settings"))
        return openSettings(argv[2], argv[3]);
    if (is(4, "--start"))
        return startInLanguage(argv[2], argv[3]);
    return measure(argv[0]);
}
