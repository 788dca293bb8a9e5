#include "screens/gallery/ZoomablePhoto.h"
#include "tests/gallery/GalleryFixture.h"
#include "tests/ui/ShownWindow.h"

#include <doctest/doctest.h>

#include <QPointingDevice>
#include <memory>

using namespace skyflare;

namespace {

/// The real views of the gallery and of a photo.
struct GalleryView : GalleryFixture, ShownWindow {
    GalleryView()
    {
        afterInput = [this] { time.runUntilIdle(); };
    }
    void show(int photos)
    {
        loadGallery(photos);
        bringUp(gallery, photos > 0 ? "PhotoCell" : "closeButton");
    }
    ZoomablePhoto &photo()
    {
        auto *const found = qobject_cast<ZoomablePhoto *>(item("imageContainer"));
        REQUIRE(found != nullptr);
        return *found;
    }
    void waitForFrame()
    {
        int frames = 0;
        const auto counting = QObject::connect(&quick(), &QQuickWindow::frameSwapped, [&] { ++frames; });
        quick().update();
        CHECK(comes([&] { return frames > 0; }));
        QObject::disconnect(counting);
    }
};

} // namespace

TEST_CASE_FIXTURE(GalleryView, "the gallery is used by keys alone")
{
    show(20);
    auto *photos = item("photos");
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Down})
        press(key);
    CHECK(gallery->collectionView()->currentIndex() == 7);
    press(Qt::Key_End);
    CHECK(focus() == "PhotoCell");
    CHECK(photos->property("contentY").toDouble() + photos->height() ==
          doctest::Approx(gallery->collectionView()->contentHeight())); // it is seen
    press(Qt::Key_Home);
    CHECK(photos->property("contentY") == 0);
    photos->setProperty("contentY", 60); // by hand
    time.globalUserInitiated().async([this] { storePhotos(1); });
    time.runUntilIdle();
    CHECK(focus() == "PhotoCell");
    CHECK(gallery->collectionView()->currentIndex() == 1);
    CHECK(photos->property("contentY") == 60);
    press(Qt::Key_Left);

    CHECK(focusAfter({Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab}) ==
          QStringList{"closeButton", "deleteAllButton", "PhotoCell"});

    press(Qt::Key_Right);
    press(Qt::Key_Return);
    REQUIRE(detail() != nullptr);
    const std::string uuid = detail()->photo()->uuid;
    CHECK(uuid == uuids()[1]);
    waitForFocus("saveButton");
    press(Qt::Key_S, Qt::ControlModifier);
    REQUIRE(library.asked.size() == 1);
    library.asked[0](AuthorizationStatus::Authorized);
    time.runUntilIdle();
    CHECK_FALSE(detail()->saveButton()->isEnabled());
    CHECK(focus() == "deleteButton");
    press(Qt::Key_S, Qt::ControlModifier);
    CHECK(library.asked.size() == 1);
    press(Qt::Key_Delete);
    CHECK(detail()->popups()->count() == 1);
    press(Qt::Key_Delete); // not through the popup
    CHECK(detail()->popups()->count() == 1);
    press(Qt::Key_Escape);
    CHECK(detail()->popups()->count() == 0);
    press(Qt::Key_Delete);
    press(Qt::Key_Return);
    CHECK(detail() == nullptr);
    waitForFocus("PhotoCell");
    CHECK(gallery->collectionView()->currentIndex() == 1);
    CHECK(gallery->photoCountLabel()->text() == "(20)");
    CHECK(std::ranges::count(uuids(), uuid) == 0);
    CHECK(uuids() == uuidsOf(photoStore.fetchImages(20)));
}

TEST_CASE_FIXTURE(GalleryView, "a photo is decoded as large as it is seen, whole while it is near")
{
    show(0);
    photoStore.saveImage(Image::fromData(*encodePng(PixelBuffer::ofSize(1600, 1200))).value());
    gallery->collectionView()->select(0);
    waitForFocus("saveButton");
    const auto pictureIs = [this](QSize size) {
        return comes([=, this] { return photo().picture().size() == size; });
    };
    quick().resize(400, 800);
    CHECK(pictureIs({400, 300}));
    const QRectF fitted = photo().photoRect();
    press(Qt::Key_Plus);
    CHECK(pictureIs({1600, 1200}));
    press(Qt::Key_0);
    CHECK(pictureIs({400, 300}));
    CHECK(comes([&] { return photo().photoRect() == fitted; }));

    const QPoint inside = fitted.center().toPoint();
    QTest::mouseDClick(&quick(), Qt::LeftButton, {}, inside);
    CHECK(comes([this] { return photo().photoRect().width() == 1600; })); // one for one
    const double left = photo().photoRect().left();
    press(Qt::Key_Right);
    CHECK(comes([&] { return photo().photoRect().left() == left - 100; }));
    QTest::mousePress(&quick(), Qt::LeftButton, {}, inside);
    for (int x = 10; x <= 60; x += 10)
        QTest::mouseMove(&quick(), inside + QPoint(x, 0));
    QTest::mouseRelease(&quick(), Qt::LeftButton, {}, inside + QPoint(60, 0));
    CHECK(photo().photoRect().left() > left - 100);
    CHECK(photo().photoRect().left() <= left - 40);

    const double wide = photo().photoRect().width();
    const std::unique_ptr<QPointingDevice> touchscreen(QTest::createTouchDevice());
    QPointingDevice *const device = touchscreen.get();
    const QPoint apart(80, 0);
    QTest::touchEvent(&quick(), device).press(0, inside - apart).press(1, inside + apart);
    for (int x = 70; x >= 30; x -= 10) {
        QTest::touchEvent(&quick(), device).move(0, inside - QPoint(x, 0)).move(1, inside + QPoint(x, 0));
        waitForFrame(); // moves are handed out once a frame
    }
    QTest::touchEvent(&quick(), device).release(0, inside).release(1, inside);
    CHECK(photo().photoRect().width() < wide);
}

TEST_CASE_FIXTURE(GalleryView, "a damaged photo among good ones says so, and can be deleted")
{
    take(1);
    Bytes png = *noise(99, 30).pngData().value();
    std::fill(png.begin() + 200, png.end() - 200, std::uint8_t{0x55});
    time.advance(1s);
    photoStore.saveImage(Image::fromData(png).value());
    show(1);
    CHECK(gallery->photoCountLabel()->text() == "(3)"); // its header is good
    gallery->collectionView()->select(1);
    waitForFocus("saveButton");
    CHECK(comes([this] { return photo().isDamaged(); }));
    CHECK(item("damagedLabel")->property("text") ==
          "This photo is damaged and cannot be shown. You can delete it.");
    press(Qt::Key_Plus);
    press(Qt::Key_Delete);
    press(Qt::Key_Return);
    CHECK(gallery->photoCountLabel()->text() == "(2)");
    waitForFocus("PhotoCell");
    gallery->collectionView()->select(1);
    waitForFocus("saveButton");
    CHECK(comes([this] { return !photo().picture().isNull(); }));
    CHECK_FALSE(photo().isDamaged());
    press(Qt::Key_Escape);
    waitForFocus("PhotoCell");
    StoreUser(folder.path(), time).photos.deletePhoto(uuids()[0]); // as another process does
    gallery->collectionView()->select(0);
    waitForFocus("saveButton");
    CHECK(comes([this] { return item("damagedLabel")->property("text") == "This photo has been deleted."; }));
}
