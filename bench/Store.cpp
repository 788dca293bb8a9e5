// How quickly the photo store answers when it is full, and gives its space back when it is emptied.

#include "bench/CameraProgram.h"
#include "bench/Machine.h"
#include "bench/Table.h"
#include "bench/WorkFolder.h"
#include "platform/persistence/ManagedObjectContext.h"
#include "platform/persistence/PersistentContainer.h"
#include "store/PhotoDataManager.h"
#include "store/PhotoEntity.h"
#include "store/Uuid.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <thread>

namespace skyflare::bench {

namespace {

/// A photo that is whole, as far as one looks without reading its pixels: a small PNG, padded in a chunk of
/// its own to `size` bytes that do not compress.
Bytes paddedPhoto(std::size_t size)
{
    const Bytes small = *encodePng(PixelBuffer::ofSize(8, 8));
    constexpr std::size_t endChunk = 12; // IEND, without data
    constexpr std::size_t chunkFrame = 12;
    const std::size_t padding = size - small.size() - chunkFrame;
    Bytes photo(small.begin(), small.end() - endChunk);
    for (const int shift : {24, 16, 8, 0})
        photo.push_back(static_cast<std::uint8_t>(padding >> shift));
    for (const char letter : {'s', 'k', 'Y', 'z'}) // private, ancillary
        photo.push_back(static_cast<std::uint8_t>(letter));
    std::mt19937 random(7);
    for (std::size_t index = 0; index < padding + 4; ++index) // its check sum is not looked at
        photo.push_back(static_cast<std::uint8_t>(random()));
    photo.insert(photo.end(), small.end() - endChunk, small.end());
    return photo;
}

/// The store as a program has it; its space is given back by the queues' threads.
struct Store {
    WorkFolder folder;
    QuietConsole console;
    SystemClock clock;
    NotificationCenter notificationCenter;
    AsioQueues queues;
    WatchStore store{folder.path(), queues, console};
    PhotoDataManager photos{{store, notificationCenter, clock, console}};

    /// Of the file and its log.
    [[nodiscard]] std::uint64_t diskBytes() const
    {
        std::uint64_t sum = 0;
        std::error_code gone;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path()))
            if (const auto size = entry.file_size(gone); !gone)
                sum += size;
        return sum;
    }
};

using Data = std::shared_ptr<const ByteSource>;

/// The photo with this number, to be committed; later numbers are newer.
void insertPhoto(Store &store, const Data &data, int number)
{
    const auto photo = store.store.persistentContainer().viewContext().insertNewObject(photoEntityName);
    photo->setValue(data, photoKeys::photoData);
    photo->setValue(makeUuid(), photoKeys::uuid);
    photo->setValue(1.7e9 + number, photoKeys::createdDate);
}

bool commit(Store &store)
{
    const auto saved = store.store.persistentContainer().viewContext().save();
    if (!saved)
        std::fprintf(stderr, "%s\n", saved.error().description().c_str());
    return bool(saved);
}

/// In transactions of many: filling is not what is measured.
bool fill(Store &store, const Data &data, int photos)
{
    for (int number = 1; number <= photos; ++number) {
        insertPhoto(store, data, number);
        if ((number % 50 == 0 || number == photos) && !commit(store))
            return false;
    }
    return true;
}

/// Seconds, the median of many rounds.
struct Answers {
    double count = 0;
    double newest = 0;
    double newest20 = 0;
    double deleteAll = 0;
    double spaceBack = 0;
    std::uint64_t filledBytes = 0;
    bool isRight = false;
};

/// Each time right after one more photo has been stored, as the screens ask: nothing is known from before.
/// @param question  is given the number of photos, and says whether the answer was right
double timeOf(Store &store, const Data &data, int &photos, const std::function<bool(int)> &question)
{
    std::vector<double> seconds;
    for (int round = 0; round < 51; ++round) {
        insertPhoto(store, data, ++photos);
        if (!commit(store))
            return -1;
        const double start = now();
        const bool isRight = question(photos);
        seconds.push_back(now() - start);
        if (!isRight)
            return -1;
    }
    return median(seconds);
}

void empty(Store &store, Answers &answers)
{
    answers.filledBytes = store.diskBytes();
    const double start = now();
    store.photos.deleteAllPhotos();
    answers.deleteAll = now() - start;
    answers.isRight = answers.isRight && store.photos.photoCount() == 0;
    constexpr double patience = 60;
    while (store.diskBytes() > answers.filledBytes / 100 + 1'000'000 && now() - start < patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    answers.spaceBack = now() - start;
}

Answers ask(int photos, std::size_t photoBytes)
{
    Store store;
    Answers answers;
    const Data data = std::make_shared<MemoryBytes>(std::make_shared<const Bytes>(paddedPhoto(photoBytes)));
    if (!store.store.load() || !fill(store, data, photos))
        return answers;
    answers.count =
        timeOf(store, data, photos, [&](int number) { return store.photos.photoCount() == number; });
    answers.newest = timeOf(store, data, photos, [&](int number) {
        const auto newest = store.photos.fetchImages(1);
        return newest.size() == 1 && newest.front().createdDate == 1.7e9 + number;
    });
    answers.newest20 = timeOf(store, data, photos, [&](int number) {
        const auto newest = store.photos.fetchImages(20);
        return newest.size() == 20 && newest.back().createdDate == 1.7e9 + number - 19;
    });
    answers.isRight = answers.count >= 0 && answers.newest >= 0 && answers.newest20 >= 0;
    empty(store, answers);
    return answers;
}

/// One question, asked of both stores.
Table::Row questionRow(const std::string &what, double large, double many, double limit)
{
    return {.what = what + ": 2,000 photos of 1 MB",
            .measured = duration(large),
            .yardstick = "20,000 of 20 kB: " + duration(many),
            .ratio = ratio(many / large),
            .reach = "<= " + duration(limit) + ", <= 2 x",
            .isReached = large <= limit && many <= 2 * large};
}

Table::Row deletionRow(const std::string &which, const Answers &answers)
{
    return {.what = "delete all " + which + ": answered, space back",
            .measured = duration(answers.deleteAll) + ", " + duration(answers.spaceBack),
            .yardstick = megabytes(answers.filledBytes) + " freed",
            .ratio = {},
            .reach = "<= 100 ms, <= 10 s",
            .isReached = answers.deleteAll <= 0.1 && answers.spaceBack <= 10};
}

int run()
{
    const Answers large = ask(2'000, 1'000'000);
    const Answers many = ask(20'000, 20'000);
    if (!large.isRight || !many.isRight) {
        std::fprintf(stderr, "the store could not be filled, or gave a wrong answer\n");
        return 1;
    }
    Table table("A full photo store");
    table.add(questionRow("count", large.count, many.count, 0.2e-3));
    table.add(questionRow("newest photo", large.newest, many.newest, 3e-3));
    table.add(questionRow("newest 20, without pixels", large.newest20, many.newest20, 10e-3));
    table.add(deletionRow("2,000 of 1 MB", large));
    table.add(deletionRow("20,000 of 20 kB", many));
    table.print();
    return 0;
}

} // namespace

} // namespace skyflare::bench

int main()
{
    return skyflare::bench::run();
}
