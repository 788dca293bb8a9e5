#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/HapticFeedback.h"
#include "screens/gallery/CollectionView.h"
#include "store/PhotoDataManager.h"
#include "ui/ButtonOutlet.h"
#include "ui/LabelOutlet.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

#include <cstdint>
#include <vector>

namespace skyflare {

/// The gallery: the newest photos in a grid, how many there are in all, and the way to be rid of them.
///
/// Threads: main. The photo store's changes are posted on other threads too, and hop here: many at once are
///     one reload.
/// Borrows its Services, which must outlive it.
class PhotoListViewController : public skyflare::ViewController, public CollectionViewDataSource {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::CollectionView *collectionView READ collectionView CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *deleteAllButton READ deleteAllButton CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *allPhotosLabel READ allPhotosLabel CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *photoCountLabel READ photoCountLabel CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *closeButton READ closeButton CONSTANT)

public:
    struct Services {
        PhotoDataManager photoDataManager;
        NotificationCenter &notificationCenter;
        SerialQueue &mainQueue;
        HapticFeedback &haptics;
        Storyboard detailStoryboard; ///< "PhotoDetailViewController"
    };

    /// The storyboard "PhotoListViewController", with the screen "PhotoListViewSB".
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared().
    explicit PhotoListViewController(const Services &services);

    void viewDidLoad() override;

    Q_INVOKABLE void deleteAllTapped();
    Q_INVOKABLE void dismissButtonTapped();
    void handleCountChange();

    // CollectionViewDataSource
    [[nodiscard]] int numberOfItemsInSection(int section) const override;
    [[nodiscard]] Cell cellForItemAtIndexPath(int item) const override;
    [[nodiscard]] QSizeF sizeForItemAtIndexPath(int item) const override;
    void didSelectItemAtIndexPath(int item) override;

    /// What the grid shows: the newest first.
    [[nodiscard]] const std::vector<PhotoModel> &recentPhotos() const { return recentPhotos_; }
    [[nodiscard]] CollectionView *collectionView() { return &collectionView_; }
    [[nodiscard]] ButtonOutlet *deleteAllButton() { return &deleteAllButton_; }
    [[nodiscard]] LabelOutlet *allPhotosLabel() { return &allPhotosLabel_; }
    [[nodiscard]] LabelOutlet *photoCountLabel() { return &photoCountLabel_; }
    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }

private:
    void observeCount();
    void showCount(std::int64_t count);
    void fetchPhotos();

    const Services services_;
    PhotoDataManager photoDataManager_;
    std::vector<PhotoModel> recentPhotos_;
    CollectionView collectionView_;
    ButtonOutlet deleteAllButton_;
    LabelOutlet allPhotosLabel_;
    LabelOutlet photoCountLabel_;
    ButtonOutlet closeButton_;
    NotificationCenter::Observation countObservation_;
};

} // namespace skyflare
