#pragma once

#include "screens/gallery/PhotoDetailViewController.h"
#include "screens/gallery/PhotoListViewController.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/store/StoreFixture.h"

#include <QCoreApplication>

namespace skyflare {

using Lines = std::vector<std::string>;

/// The gallery on fakes, in virtual time, over a real store; no window. Its view has not been loaded.
struct GalleryFixture : StoreFixture {
    RecordingConsole console;
    UserDefaults defaults{folder / "settings.plist", console};
    App app{{defaults, user.center, console}};
    FakePhotoLibrary library;
    RecordingHaptics haptics;
    RecordingURLOpener opener;
    RecordingStoreReview review;
    Storyboard detailStoryboard = PhotoDetailViewController::storyboard(
        {app, user.photos, LogManager(time, console), library, time.mainQueue(), console, haptics, opener,
         review, "help@example.org"});
    std::shared_ptr<PhotoListViewController> gallery =
        PhotoListViewController::storyboard(
            {user.photos, user.center, time.mainQueue(), haptics, detailStoryboard})
            .instantiateViewController<PhotoListViewController>("PhotoListViewSB");

    ~GalleryFixture()
    {
        library.asked.clear();
        gallery.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // it borrows all of the above
    }

    void store(int photos)
    {
        for (int i = 0; i < photos; ++i)
            user.photos.saveImage(noise(seed_++));
    }
    /// Photos of another moment each, the last one is the newest.
    void take(int photos)
    {
        for (int i = 0; i < photos; ++i) {
            time.advance(std::chrono::seconds(1));
            store(1);
        }
    }
    /// Takes photos, and loads the screen.
    void load(int photos)
    {
        take(photos);
        gallery->loadViewIfNeeded();
        gallery->collectionView()->setWidth(304);
    }
    /// The photo of that cell on the detail screen.
    std::shared_ptr<PhotoDetailViewController> open(int cell)
    {
        gallery->collectionView()->select(cell);
        return std::static_pointer_cast<PhotoDetailViewController>(gallery->presentedViewController());
    }
    [[nodiscard]] Lines uuids() const
    {
        Lines all;
        for (const PhotoModel &photo : gallery->recentPhotos())
            all.push_back(photo.uuid);
        return all;
    }
    QRectF frameOf(int cell)
    {
        const CollectionView &grid = *gallery->collectionView();
        return grid.data(grid.index(cell), CollectionView::FrameRole).toRectF();
    }
    static Lines popups(ViewController &screen)
    {
        Lines texts;
        for (const auto &popup : screen.popups()->popups())
            texts.push_back(popup->icon()->symbol() + " | " + popup->titleLabel()->text() + " | " +
                            popup->descriptionLabel()->text() + " | " + popup->button()->text());
        return texts;
    }
    static void tapPopup(ViewController &screen) { screen.popups()->popups().back()->buttonTapped(); }
    /// The kinds of the events that have been logged, in order.
    [[nodiscard]] Lines events() const
    {
        const std::string start = "Logged event: ";
        Lines names;
        for (const std::string &line : console.lines()) {
            if (line.starts_with(start))
                names.push_back(line.substr(start.size(), line.find(' ', start.size()) - start.size()));
        }
        return names;
    }

private:
    std::uint32_t seed_ = 1;
};

} // namespace skyflare
