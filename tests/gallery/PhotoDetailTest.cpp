#include "screens/gallery/DetailPopups.h"
#include "screens/gallery/PhotoZoom.h"
#include "tests/gallery/GalleryFixture.h"

#include <doctest/doctest.h>

using namespace skyflare;

TEST_CASE_FIXTURE(GalleryFixture, "a photo is saved with its date, counted and logged, once")
{
    loadGallery(2);
    const auto detail = open(0);
    CHECK(detail->saveButton()->text() == "Save to Photos");
    detail->saveButtonTapped();
    detail->saveButtonTapped(); // a second tap is not a second copy
    REQUIRE(library.asked.size() == 1);
    CHECK(events() == Lines{"attempt_to_save_photo"});

    SUBCASE("on the screen") {}
    SUBCASE("also where the screen is closed before the answer")
    {
        detail->dismissButtonTapped();
    }
    library.asked[0](AuthorizationStatus::Authorized);
    CHECK(detail->saveButton()->isEnabled()); // that was another thread; main has not come to it
    time.runUntilIdle();
    CHECK(library.assetDates == std::vector{1'700'000'002.0});
    CHECK(detail->saveButton()->text() == "Saved!");
    CHECK(detail->saveButton()->symbol() == "checkmark.circle");
    CHECK_FALSE(detail->saveButton()->isEnabled());
    CHECK(detail->saveButton()->alpha() == 0.5);
    CHECK(app.savedPhoto() == 1);
    CHECK(events() == Lines{"attempt_to_save_photo", "photo_saved"});
    CHECK(popups(*detail).empty());
}

TEST_CASE_FIXTURE(GalleryFixture, "a save that does not succeed leaves the screen as it was")
{
    loadGallery(1);
    const auto detail = open(0);
    const std::string permission = "We need your permission";
    struct Row {
        AuthorizationStatus status;
        LibraryChange change;
        Lines popups;
        Lines opened;
    };
    const std::vector<Row> rows{
        {AuthorizationStatus::Denied, {}, {permission}, {"app-settings:"}},
        {AuthorizationStatus::Limited, {}, {permission}, {"app-settings:"}},
        {AuthorizationStatus::NotDetermined, {}, {permission}, {"app-settings:"}},
        {AuthorizationStatus::Authorized,
         {false, Error{"disk", 28, "No space left on device"}},
         {"We couldn't save your photo."},
         {"mailto:help@example.org?subject=Photo%20Save%20Error&body=I%27m%20having%20trouble%20saving%20a%"
          "20photo.%20Please%20send%20me%20a%20screenshot%20of%20the%20error."}},
        {AuthorizationStatus::Authorized, {false, std::nullopt}, {}, {}},
    };
    for (const Row &row : rows) {
        CAPTURE(static_cast<int>(row.status));
        opener.opened.clear();
        library.change = row.change;
        detail->saveButtonTapped();
        library.asked.back()(row.status);
        time.runUntilIdle();
        CHECK(popups(*detail) == row.popups);
        if (!row.popups.empty())
            tapPopup(*detail);
        CHECK(popups(*detail).empty());
        CHECK(opener.opened == row.opened);
    }
    CHECK(library.assetDates.size() == 2); // none without permission
    CHECK(detail->saveButton()->text() == "Save to Photos");
    CHECK(detail->saveButton()->isEnabled());
    CHECK(app.savedPhoto() == 0);
    CHECK(events() == Lines(5, "attempt_to_save_photo"));
}

TEST_CASE("a mail to nobody, or to an odd address, is a draft all the same")
{
    CHECK(saveErrorMail("").starts_with("mailto:?subject=Photo%20Save%20Error&body="));
    CHECK(saveErrorMail("a b+c?d&e@exämple.org").starts_with("mailto:a%20b+c%3Fd%26e@ex%C3%A4mple.org?"));
}

TEST_CASE_FIXTURE(GalleryFixture, "a review is asked for after the second, tenth and twentieth save")
{
    loadGallery(1);
    std::string asked;
    for (int save = 1; save <= 22; ++save) { // the same photo, opened again each time
        const auto detail = open(0);
        detail->saveButtonTapped();
        library.asked.back()(AuthorizationStatus::Authorized);
        const int before = review.requests;
        time.runUntilIdle();
        if (review.requests > before)
            asked += std::to_string(save) + " ";
        detail->dismissButtonTapped();
    }
    CHECK(asked == "2 10 20 ");
    CHECK(app.savedPhoto() == 22);
}

TEST_CASE("a photo covers its room, keeps what is under the hand, and is not lost beyond an edge")
{
    PhotoZoom zoom;
    zoom.zoomBy(2, {1, 1}); // nothing is there yet
    zoom.setUp({4000, 3000}, {0, 50, 400, 400}, 1);
    CHECK(zoom.photoRect() == QRectF(0, 100, 400, 300));

    zoom.zoomBy(2, {100, 250}); // a quarter of the photo from its left, in the middle of its height
    CHECK(zoom.photoRect() == QRectF(-100, -50, 800, 600));
    zoom.panBy({1000, -30});
    CHECK(zoom.photoRect() == QRectF(0, -80, 800, 600));
    zoom.panBy({0, -1000});
    CHECK(zoom.photoRect() == QRectF(0, -150, 800, 600));
    zoom.setUp({4000, 3000}, {0, 0, 800, 800}, 1); // the window has grown; as near as it was
    CHECK(zoom.photoRect() == QRectF(0, -400, 1600, 1200));

    zoom.zoomBy(1e9, {400, 400});
    CHECK(zoom.photoRect().size() == QSizeF(8000, 6000)); // two pixels for one
    zoom.zoomBy(1e-9, {0, 0});
    CHECK_FALSE(zoom.isZoomed());
    CHECK(zoom.photoRect() == QRectF(0, 100, 800, 600));

    zoom.toggle({400, 400});
    CHECK(zoom.photoRect().size() == QSizeF(4000, 3000)); // one for one
    zoom.toggle({0, 0});
    CHECK(zoom.photoRect() == QRectF(0, 100, 800, 600));
    zoom.setUp({400, 300}, {0, 0, 800, 800}, 2); // small: it is enlarged
    zoom.toggle({400, 400});
    CHECK(zoom.photoRect().size() == QSizeF(1600, 1200));
}
