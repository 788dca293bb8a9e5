#pragma once

#include "tests/main/MainFixture.h"
#include "tests/store/StoreFixture.h"

namespace skyflare {

/// The gallery over the main screen's fixture. Its view has not been loaded.
struct GalleryFixture : MainFixture {
    std::shared_ptr<PhotoListViewController> gallery =
        galleryStoryboard.instantiateViewController<PhotoListViewController>("PhotoListViewSB");

    void storePhotos(int photos)
    {
        for (int i = 0; i < photos; ++i)
            photoStore.saveImage(noise(seed_++));
    }
    /// Photos of another moment each, the last one is the newest.
    void take(int photos)
    {
        for (int i = 0; i < photos; ++i) {
            time.advance(1s);
            storePhotos(1);
        }
    }
    /// Takes photos, and loads the screen.
    void loadGallery(int photos)
    {
        take(photos);
        gallery->loadViewIfNeeded();
        gallery->collectionView()->setWidth(304);
    }
    /// The photo that is open; null if there is none.
    std::shared_ptr<PhotoDetailViewController> detail()
    {
        return std::static_pointer_cast<PhotoDetailViewController>(gallery->presentedViewController());
    }
    /// The photo of that cell on the detail screen.
    std::shared_ptr<PhotoDetailViewController> open(int cell)
    {
        gallery->collectionView()->select(cell);
        return detail();
    }
    static Lines uuidsOf(const std::vector<PhotoModel> &photos)
    {
        Lines all;
        for (const PhotoModel &photo : photos)
            all.push_back(photo.uuid);
        return all;
    }
    [[nodiscard]] Lines uuids() const { return uuidsOf(gallery->recentPhotos()); }

private:
    std::uint32_t seed_ = 1;
};

} // namespace skyflare
