#include "platform/sqlite/Database.h"
#include "tests/gallery/GalleryFixture.h"

#include <doctest/doctest.h>

#include <QSignalSpy>

using namespace skyflare;

TEST_CASE("three cells fill a row, and a row that is not full is packed left")
{
    CustomCollectionViewLayout layout;
    layout.prepareLayout(304, std::vector<QSizeF>(5, {100, 100}));
    CHECK(layout.layoutAttributesForElements() == std::vector<QRectF>{{0, 0, 100, 100},
                                                                      {102, 0, 100, 100},
                                                                      {204, 0, 100, 100},
                                                                      {0, 102, 100, 100},
                                                                      {102, 102, 100, 100}});
    CHECK(layout.contentHeight() == 202);
    layout.prepareLayout(304, {});
    CHECK(layout.contentHeight() == 0);
    for (int width = 200; width < 2000; ++width) { // thirds that are no whole numbers
        layout.prepareLayout(width, std::vector<QSizeF>(4, {(width - 4) / 3.0, (width - 4) / 3.0}));
        CAPTURE(width);
        REQUIRE(layout.layoutAttributesForElements()[2].y() == 0);
        REQUIRE(layout.layoutAttributesForElements()[3].x() == 0);
    }
}

TEST_CASE_FIXTURE(GalleryFixture, "of 25 photos the 20 newest are shown, and all are deleted or none")
{
    loadGallery(25);
    CHECK(gallery->photoCountLabel()->text() == "(25)");
    CHECK(uuids() == uuidsOf(photoStore.fetchImages(20)));
    const auto other = *Database::open(store.persistentContainer().file(), OpenMode::Write, 0ms);
    QSignalSpy reloads(gallery->collectionView(), &CollectionView::countChanged);
    const auto checkNothingIsGone = [this] {
        CHECK(gallery->collectionView()->count() == 20);
        CHECK(gallery->photoCountLabel()->text() == "(25)");
        CHECK_FALSE(gallery->deleteAllButton()->isHidden());
    };
    gallery->deleteAllTapped();
    gallery->escapePressed();
    CHECK(photoStore.photoCount() == 25);
    checkNothingIsGone();

    REQUIRE(other->execute("BEGIN IMMEDIATE")); // the store fails
    gallery->deleteAllTapped();
    tapPopup(*gallery);
    CHECK(reloads.count() == 1);
    checkNothingIsGone();

    REQUIRE(other->execute("ROLLBACK"));
    gallery->deleteAllTapped();
    tapPopup(*gallery);
    CHECK(popups(*gallery).empty());
    CHECK(gallery->collectionView()->count() == 0);
    CHECK(gallery->photoCountLabel()->text() == "(0)");
    CHECK(gallery->deleteAllButton()->isHidden());
    gallery->collectionView()->moveCurrent(CollectionView::Down); // to nowhere
    take(2);
    CHECK(gallery->collectionView()->count() == 2);
    CHECK(gallery->photoCountLabel()->text() == "(2)");
    CHECK_FALSE(gallery->deleteAllButton()->isHidden());
}

TEST_CASE_FIXTURE(GalleryFixture,
                  "what is stored on other threads comes in one reload, and leaves the keys alone")
{
    loadGallery(20);
    CollectionView &grid = *gallery->collectionView();
    grid.moveCurrent(CollectionView::Down);
    grid.moveCurrent(CollectionView::Right);
    const std::string fourth = uuids()[4];
    QSignalSpy reloads(&grid, &CollectionView::countChanged);
    QSignalSpy inserted(&grid, &CollectionView::rowsInserted);
    QSignalSpy removed(&grid, &CollectionView::rowsRemoved);
    time.globalUserInitiated().async([this] { storePhotos(3); });
    time.runUntilIdle();
    CHECK(reloads.count() == 1);
    CHECK(inserted.count() == 3); // the others are the same cells, elsewhere
    CHECK(removed.count() == 3);
    CHECK(gallery->photoCountLabel()->text() == "(23)");
    REQUIRE(grid.currentIndex() == 7);
    CHECK(uuids()[7] == fourth);
    CHECK(grid.data(grid.index(7), CollectionView::FrameRole) == QRectF(102, 204, 100, 100));

    photoStore.deletePhoto(fourth);
    CHECK(grid.currentIndex() == 7); // what has come to its place
    grid.moveCurrent(CollectionView::End);
    CHECK(grid.currentIndex() == 19);
    grid.moveCurrent(CollectionView::Down);
    CHECK(grid.currentIndex() == 19);
    for (int i = 0; i < 12; ++i)
        photoStore.deletePhoto(uuids()[0]);
    CHECK(grid.currentIndex() == 7); // the same photo, of ten now
    grid.moveCurrent(CollectionView::Down);
    CHECK(grid.currentIndex() == 9); // in a row that is not full
    photoStore.deletePhoto(uuids()[9]);
    CHECK(grid.currentIndex() == 8);
    grid.moveCurrent(CollectionView::Up);
    grid.moveCurrent(CollectionView::Up);
    CHECK(grid.currentIndex() == 2);
    grid.moveCurrent(CollectionView::Home);
    grid.moveCurrent(CollectionView::Left);
    grid.moveCurrent(CollectionView::Up);
    CHECK(grid.currentIndex() == 0);
}
