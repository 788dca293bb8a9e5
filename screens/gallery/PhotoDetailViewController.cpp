#include "screens/gallery/PhotoDetailViewController.h"

#include "platform/base/Localization.h"
#include "screens/gallery/DetailPopups.h"
#include "screens/gallery/PhotoName.h"
#include "ui/SharedObject.h"

#include <algorithm>
#include <array>
#include <limits>

namespace skyflare {

namespace {

constexpr std::array<std::int64_t, 3> savesWithReview{2, 10, 20};

} // namespace

Storyboard PhotoDetailViewController::storyboard(const Services &services)
{
    return {"PhotoDetailViewController",
            {{"PhotoDetailViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Gallery/PhotoDetailView.qml")),
              [services] { return makeShared<PhotoDetailViewController>(services); }}}};
}

PhotoDetailViewController::PhotoDetailViewController(const Services &services)
    : services_(services), photoDataManager_(services.photoDataManager), logManager_(services.logManager)
{
}

std::shared_ptr<PhotoDetailViewController> PhotoDetailViewController::self()
{
    return std::static_pointer_cast<PhotoDetailViewController>(shared_from_this());
}

void PhotoDetailViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    if (photo_)
        imageContainer_.setImage(photo_->image);
    saveButton_.setText(localized("Save to Photos"));
    saveButton_.setSymbol("save");
    deleteButton_.setSymbol("trash");
    deleteButton_.setAccessibleName(localized("Delete Photo"));
    closeButton_.setSymbol("close");
    closeButton_.setAccessibleName(localized("Close"));
}

QString PhotoDetailViewController::shownPhotoName() const
{
    return photo_ ? QString::fromStdString(photoName(*photo_)) : QString();
}

void PhotoDetailViewController::photoNotShown()
{
    const bool isThere = photo_ && photoDataManager_.mayHavePhoto(photo_->uuid);
    damagedLabel_.setText(localized(isThere ? "This photo is damaged and cannot be shown. You can delete it."
                                            : "This photo has been deleted."));
}

void PhotoDetailViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

void PhotoDetailViewController::showPopup(CustomPopupView::Contents contents)
{
    CustomPopupView::make(services_.haptics, std::move(contents))->show(*this);
}

void PhotoDetailViewController::deleteButtonTapped()
{
    showPopup(deletePhotoPopup([this] { // the popup is this screen's, and goes before it
        if (!photo_)
            return;
        photoDataManager_.deletePhoto(photo_->uuid);
        dismiss(Animated::Yes);
    }));
}

// --- Saving

void PhotoDetailViewController::saveButtonTapped()
{
    if (!photo_) {
        services_.console.printLine("No photo available to save.");
        return;
    }
    if (isSaving_) // a second tap is not a second copy
        return;
    isSaving_ = true;
    logManager_.logEvent(LogEvent::AttemptToSavePhoto);
    services_.photoLibrary.requestAuthorization([self = self(), &library = services_.photoLibrary,
                                                 &mainQueue = services_.mainQueue,
                                                 photo = *photo_](AuthorizationStatus status) {
        // Deliberate: limited access is a refusal too.
        if (status != AuthorizationStatus::Authorized) {
            mainQueue.async([self] { self->libraryRefused(); });
            return;
        }
        library.createAsset(photo.image, photo.createdDate, [self, &mainQueue](const LibraryChange &change) {
            mainQueue.async([self, change] { self->didSave(change); });
        });
    });
}

void PhotoDetailViewController::libraryRefused()
{
    isSaving_ = false;
    showPopup(libraryRefusedPopup(services_.urlOpener));
}

void PhotoDetailViewController::didSave(const LibraryChange &change)
{
    isSaving_ = false;
    if (!change.success) {
        if (change.error)
            showPopup(saveErrorPopup(services_.urlOpener, services_.supportAddress));
        return;
    }
    saveButton_.setSymbol("checkmark.circle");
    saveButton_.setText(localized("Saved") + "!");
    saveButton_.setEnabled(false);
    saveButton_.setAlpha(0.5);
    if (services_.app.savedPhoto() == std::numeric_limits<std::int64_t>::max())
        qFatal("PhotoDetailViewController: more photos have been saved than can be counted");
    services_.app.setSavedPhoto(services_.app.savedPhoto() + 1);
    askForReview();
    logManager_.logEvent(LogEvent::PhotoSaved);
}

/// After some saves: by then the user knows what the app is good for.
void PhotoDetailViewController::askForReview()
{
    if (std::ranges::find(savesWithReview, services_.app.savedPhoto()) != savesWithReview.end())
        services_.storeReview.requestReview();
}

} // namespace skyflare
