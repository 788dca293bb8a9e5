// How quickly the photos of a gallery can be had, small and sharp, without the window that shows them.

#include "bench/Machine.h"
#include "bench/PhotoYardsticks.h"
#include "bench/PngPictures.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/base/AsioQueues.h"
#include "platform/base/StandardConsole.h"
#include "platform/linux/SystemClock.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PhotoDataManager.h"
#include "store/PhotoEntity.h"

#include <functional>

namespace skyflare::bench {

namespace {

constexpr int photoCount = 20;
/// A cell of three columns on a phone 390 points wide, at three pixels a point; its photo covers it.
constexpr int cellWidth = 515;
constexpr int cellHeight = 386;
/// The screen of that phone.
constexpr int screenWidth = 1170;
constexpr int screenHeight = 2532;
constexpr int rounds = 7;

double medianOf(const std::function<double()> &measure)
{
    std::vector<double> seconds;
    for (int round = 0; round < rounds; ++round)
        seconds.push_back(measure());
    return median(std::move(seconds));
}

double timeOf(const std::function<void()> &work)
{
    const double start = now();
    work();
    return now() - start;
}

/// As the app has it: photos that it has caught.
struct Gallery final : PersistentContainerProvider {
    WorkFolder folder;
    StandardConsole console;
    SystemClock clock;
    NotificationCenter notificationCenter;
    AsioQueues queues;
    std::filesystem::path cache = folder.path() / "thumbnails";
    ThumbnailCache thumbnails{cache, queues.globalUserInitiated()};
    std::shared_ptr<SerialQueue> storage = queues.makeSerialQueue("storage");
    PersistentContainer container{{storageContainerName, folder.path(), storageModel()}, {console, *storage}};
    PhotoDataManager photos{{*this, notificationCenter, clock, console, &thumbnails}};

    PersistentContainer &persistentContainer() override { return container; }
    void fill(const Image &photo)
    {
        require(bool(container.loadPersistentStores()), "the store can be opened");
        for (int number = 0; number < photoCount; ++number)
            photos.saveImage(photo);
        require(photos.photoCount() == photoCount, "the photos are stored");
    }
    /// From the question to the last thumbnail.
    double showAll()
    {
        std::vector<PhotoModel> newest;
        const double asked = timeOf([&] { newest = photos.fetchImages(photoCount); });
        return asked + onThreads(photoCount, [&](int photo) {
                   const auto shown =
                       newest.at(static_cast<std::size_t>(photo)).image.thumbnail(cellWidth, cellHeight);
                   require(shown && shown->height == cellHeight, "a thumbnail is there");
               });
    }
};

void addCached(Table &table, Gallery &gallery, const Bytes &copy)
{
    const double cached = medianOf([&] { return gallery.showAll(); });
    const double bare = medianOf([&] { return decodingCopies(copy, photoCount); });
    table.add({.what = "20 thumbnails of caught photos of 12 MP, from the fetch on",
               .measured = duration(cached),
               .yardstick = "libjpeg, the copies whole: " + duration(bare),
               .ratio = ratio(cached / bare),
               .reach = "<= 300 ms with the window",
               .isReached = cached <= 0.2});
}

void addUncached(Table &table, Gallery &gallery, const Bytes &png)
{
    const auto showAnew = [&] {
        std::filesystem::remove_all(gallery.cache);
        return gallery.showAll();
    };
    forgetPeak();
    const std::uint64_t before = currentMemory();
    const double uncached = medianOf(showAnew);
    const std::uint64_t peak = peakMemory();
    const double bare = decodingPhotos(png, photoCount);
    table.add({.what = "the same, none in the cache; each is put there",
               .measured = duration(uncached),
               .yardstick = "libspng, the photos whole: " + duration(bare),
               .ratio = ratio(uncached / bare),
               .reach = "<= 2.5 s with the window",
               .isReached = uncached <= 2.2});
    table.add({.what = "most memory meanwhile",
               .measured = megabytes(peak),
               .yardstick = "before: " + megabytes(before),
               .ratio = {},
               .reach = "<= 250 MB with the window",
               .isReached = peak <= 250'000'000});
}

void addSharp(Table &table, Gallery &gallery, const Bytes &png, std::size_t pixelBytes)
{
    const Image photo = gallery.photos.fetchImages(1).at(0).image;
    Bytes pixels(pixelBytes);
    const double bare = medianOf([&] { return timeOf([&] { decodeBySpng(png, pixels); }); });
    const double fitted = medianOf([&] {
        return timeOf([&] { require(bool(photo.thumbnail(screenWidth, screenHeight)), "a photo is sharp"); });
    });
    const double whole =
        medianOf([&] { return timeOf([&] { require(bool(photo.pixels()), "a photo is whole"); }); });
    for (const auto &[what, seconds] :
         {std::pair{"a photo of 12 MP from the store, sharp on 1170 x 2532", fitted},
          std::pair{"the same, all its pixels", whole}})
        table.add({.what = what,
                   .measured = duration(seconds),
                   .yardstick = "libspng, from memory: " + duration(bare),
                   .ratio = ratio(seconds / bare),
                   .reach = "<= 250 ms",
                   .isReached = seconds <= 0.25});
}

int run()
{
    const VideoFrame frame = nightFrame();
    const double encoding = medianOf([&] { return timeOf([&] { (void)encodePng(frame); }); });
    const double reducing = medianOf([&] { return timeOf([&] { (void)encodeReduced(frame); }); });
    const Bytes png = *encodePng(frame);
    const auto copy = *encodeReduced(frame);
    Gallery gallery;
    gallery.fill(Image::fromData(png)->withReduced(std::make_shared<ReducedInMemory>(copy)));
    const std::size_t pixelBytes =
        std::size_t{3} * static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);

    Table table("A gallery of 20 photos of 12 MP");
    table.add({.what = "the small copy of a photo that is caught (" + megabytes(copy->size()) + ")",
               .measured = duration(reducing),
               .yardstick = "its PNG, on two threads: " + duration(encoding),
               .ratio = ratio(reducing / encoding),
               .reach = "<= 1 x",
               .isReached = reducing <= encoding});
    addCached(table, gallery, *copy);
    addUncached(table, gallery, png);
    addSharp(table, gallery, png, pixelBytes);
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
