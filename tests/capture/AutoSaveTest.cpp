#include "capture/AutoSave.h"

#include "tests/capture/CaptureFixture.h"
#include "tests/fakes/RecordingDesktop.h"

#include <doctest/doctest.h>

using namespace skyflare;

TEST_CASE_FIXTURE(CaptureFixture,
                  "a photo goes to the photo library when auto-save is on and access is given")
{
    FakePhotoLibrary library;
    LogManager log(time, console);
    AutoSave autoSave({library, console, app, log});
    const Image photo = *Image::fromData(onePixelPng());
    int permissionsMissed = 0;
    const auto handOver = [&] { autoSave.handOver(photo, 1234.5, [&] { ++permissionsMissed; }); };

    handOver();
    CHECK(library.asked.empty());
    CHECK(console.lines().empty());

    app.setAutoSave(true);
    console.clear();
    handOver();
    REQUIRE(library.asked.size() == 1);
    REQUIRE(console.lines().size() == 1); // logged before the answer
    CHECK(console.lines()[0].starts_with("Logged event: photo_auto_saved with parameters: "));
    console.clear();

    // One answer after the other, as for as many photos.
    library.asked[0](AuthorizationStatus::Denied);
    library.asked[0](AuthorizationStatus::Limited);
    CHECK(permissionsMissed == 2);
    CHECK(library.assetDates.empty());
    library.asked[0](AuthorizationStatus::Authorized);
    library.change = {false, Error{"library", 28, "no space left on the device"}};
    library.asked[0](AuthorizationStatus::Authorized);
    CHECK(permissionsMissed == 2);
    CHECK(library.assetDates == std::vector<double>{1234.5, 1234.5});
    CHECK(console.lines() == Lines{"Fotoğraf başarıyla galeriye kaydedildi.",
                                   "Fotoğraf galeriye kaydedilemedi: no space left on the device"});
}
