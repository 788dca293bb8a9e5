// A program that the tests of the photo store run, kill, and put onto disks with faults.
//
//     photo_saver crash FOLDER N   does a little of everything, prints the uuid of each photo once it is
//                                  committed and "deleting" before it deletes all, and dies in the middle of
//                                  its Nth change to a file; prints how many it made if it gets through
//     photo_saver two FOLDER       saves two photos into FOLDER/store and ends
//     photo_saver full FOLDER      goes to the limit of a small disk, and on
//     photo_saver read-only FOLDER uses a store, FOLDER/store, that cannot be written
#include "tests/fakes/FileFaults.h"
#include "tests/store/StoreFixture.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

using namespace skyflare;

namespace {

void print(const std::string &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void printConsole(StoreUser &user)
{
    for (const std::string &line : user.console.lines())
        print(line);
    user.console.clear();
}

/// How many photos there are, how many of them are whole, and what was announced.
void printState(StoreUser &user)
{
    long whole = 0;
    for (const PhotoModel &photo : user.photos.fetchImages(0))
        whole += photo.image.pixels() ? 1 : 0;
    print(std::to_string(user.photos.photoCount()) + " photos, " + std::to_string(whole) + " whole, " +
          std::to_string(user.context().insertedObjects().size()) + " pending, " +
          std::to_string(user.takePosts()) + " posts");
}

void crash(const std::filesystem::path &folder, long atChange)
{
    using namespace std::chrono_literals;
    fileFaults::plan(fileFaults::Kind::KillAtChange, atChange);
    VirtualTime time;
    {
        StoreUser user(folder, time);
        for (const int kilobytes : {3, 100, 30, 60}) {
            user.photos.saveImage(noise(1, kilobytes));
            print(user.uuids(1).at(0));
            if (kilobytes == 100) {
                time.advance(10s);
                print("deleting");
                user.photos.deleteAllPhotos();
            }
        }
        time.advance(10s);
    }
    print(std::to_string(fileFaults::calls()));
}

void fillDisk(const std::filesystem::path &folder)
{
    using namespace std::chrono_literals;
    VirtualTime time;
    StoreUser user(folder / "store", time);
    user.photos.saveImage(noise(1, 2000));
    printState(user);
    while (user.console.lines().empty())
        user.photos.saveImage(noise(2, 2000));
    user.takePosts();
    printConsole(user);
    if (const auto deleted = user.context().executeBatchDelete(photoEntityName); !deleted)
        print(deleted.error().description());
    printState(user);
    time.advance(10s);
    user.photos.saveImage(noise(4, 100));
    printConsole(user);
    printState(user);
}

void saveTwo(const std::filesystem::path &folder)
{
    VirtualTime time;
    StoreUser user(folder / "store", time.globalUserInitiated(), time, std::chrono::minutes(5));
    if (!user.loaded)
        print(user.loaded.error().description());
    user.photos.saveImage(noise(1));
    user.photos.saveImage(noise(2));
    printConsole(user);
}

void useReadOnly(const std::filesystem::path &folder)
{
    VirtualTime time;
    StoreUser user(folder / "store", time);
    printState(user);
    user.photos.saveImage(noise(3));
    user.photos.deletePhoto(user.photos.fetchImages(0).back().uuid);
    user.photos.deleteAllPhotos();
    printConsole(user);
    printState(user);
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 3)
        return 2;
    const std::string mode = arguments[1];
    if (mode == "crash" && count == 4)
        crash(arguments[2], std::atol(arguments[3]));
    else if (mode == "two")
        saveTwo(arguments[2]);
    else if (mode == "full")
        fillDisk(arguments[2]);
    else
        useReadOnly(arguments[2]);
}
