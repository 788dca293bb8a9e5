#include "screens/gallery/PhotoListViewController.h"

#include "platform/base/Localization.h"
#include "screens/gallery/PhotoDetailViewController.h"
#include "screens/gallery/PhotoName.h"
#include "ui/CustomPopupView.h"
#include "ui/SharedObject.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace skyflare {

namespace {

constexpr int mostPhotos = 20; // in the grid; the label counts them all
constexpr int columns = 3;

} // namespace

Storyboard PhotoListViewController::storyboard(const Services &services)
{
    return {"PhotoListViewController",
            {{"PhotoListViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Gallery/PhotoListView.qml")),
              [services] { return makeShared<PhotoListViewController>(services); }}}};
}

PhotoListViewController::PhotoListViewController(const Services &services)
    : services_(services), photoDataManager_(services.photoDataManager)
{
}

void PhotoListViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    collectionView_.setDataSource(*this);
    showCount(photoDataManager_.photoCount());
    fetchPhotos();
    allPhotosLabel_.setText(localized("All Photos"));
    deleteAllButton_.setText(localized("Delete All"));
    closeButton_.setSymbol("close");
    closeButton_.setAccessibleName(localized("Close"));
    observeCount();
}

void PhotoListViewController::observeCount()
{
    const auto isOnItsWay = std::make_shared<std::atomic<bool>>(false);
    const std::weak_ptr weak = std::static_pointer_cast<PhotoListViewController>(shared_from_this());
    const auto handle = [weak, isOnItsWay] {
        *isOnItsWay = false; // first: what is posted from here on may not be in what is read
        if (const auto self = weak.lock())
            self->handleCountChange();
    };
    countObservation_ = services_.notificationCenter.addObserver(
        countDidChange, [handle, isOnItsWay, mainQueue = &services_.mainQueue] {
            if (mainQueue->isCurrent())
                handle();
            else if (!isOnItsWay->exchange(true))
                mainQueue->async(handle);
        });
}

void PhotoListViewController::handleCountChange()
{
    showCount(photoDataManager_.photoCount());
    fetchPhotos();
}

void PhotoListViewController::showCount(std::int64_t count)
{
    deleteAllButton_.setHidden(count == 0);
    photoCountLabel_.setText("(" + std::to_string(count) + ")");
}

void PhotoListViewController::fetchPhotos()
{
    recentPhotos_ = photoDataManager_.fetchImages(mostPhotos);
    collectionView_.reloadData();
}

// --- The grid

int PhotoListViewController::numberOfItemsInSection(int /*section*/) const
{
    return static_cast<int>(recentPhotos_.size());
}

CollectionViewDataSource::Cell PhotoListViewController::cellForItemAtIndexPath(int item) const
{
    const PhotoModel &photo = recentPhotos_[static_cast<std::size_t>(item)];
    return {photo.uuid, photo.image, photoName(photo)};
}

QSizeF PhotoListViewController::sizeForItemAtIndexPath(int /*item*/) const
{
    constexpr double gaps = (columns - 1) * CustomCollectionViewLayout::minimumInteritemSpacing;
    const double side = std::max(0.0, (collectionView_.width() - gaps) / columns);
    return {side, side};
}

void PhotoListViewController::didSelectItemAtIndexPath(int item)
{
    const auto detail =
        services_.detailStoryboard.instantiateViewController<PhotoDetailViewController>("PhotoDetailViewSB");
    detail->setPhoto(recentPhotos_[static_cast<std::size_t>(item)]);
    present(detail, Animated::Yes);
}

// --- Actions

void PhotoListViewController::deleteAllTapped()
{
    CustomPopupView::make(services_.haptics,
                          {.icon = "trash",
                           .title = localized("Delete All"),
                           .description = localized(
                               "Are you sure you want to delete all photos? You can not undo this action."),
                           .buttonTitle = localized("Yes, Delete All"),
                           .tapAction =
                               [this] { // the popup is this screen's, and goes before it
                                   photoDataManager_.deleteAllPhotos();
                                   fetchPhotos();
                               }})
        ->show(*this);
}

void PhotoListViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

} // namespace skyflare
