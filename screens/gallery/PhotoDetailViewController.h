#pragma once

#include "app/App.h"
#include "logging/LogManager.h"
#include "platform/base/DispatchQueue.h"
#include "platform/desktop/HapticFeedback.h"
#include "platform/desktop/PhotoLibrary.h"
#include "platform/desktop/StoreReview.h"
#include "platform/desktop/URLOpener.h"
#include "store/PhotoDataManager.h"
#include "ui/ButtonOutlet.h"
#include "ui/CustomPopupView.h"
#include "ui/ImageOutlet.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

#include <memory>
#include <optional>
#include <string>

namespace skyflare {

/// One photo, full size: into the library of the desktop, out of the app's own store, or back.
///
/// Threads: main. The library answers on threads of its own, which hop here.
/// Borrows its Services, which must outlive it. Lives at least as long as a save that it has begun: what was
/// asked for is done and counted, also where the screen has been closed meanwhile.
class PhotoDetailViewController : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::ViewOutlet *containerView READ containerView CONSTANT)
    Q_PROPERTY(skyflare::ImageOutlet *imageContainer READ imageContainer CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *saveButton READ saveButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *deleteButton READ deleteButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *closeButton READ closeButton CONSTANT)
    Q_PROPERTY(QString photoName READ shownPhotoName CONSTANT)
    /// Said where the photo cannot be shown.
    Q_PROPERTY(skyflare::LabelOutlet *damagedLabel READ damagedLabel CONSTANT)

public:
    struct Services {
        App &app;
        PhotoDataManager photoDataManager;
        LogManager logManager;
        PhotoLibrary &photoLibrary;
        SerialQueue &mainQueue;
        Console &console;
        HapticFeedback &haptics;
        URLOpener &urlOpener;
        StoreReview &storeReview;
        std::string supportAddress; ///< an e-mail address; empty: whom to write to is left to the user
    };

    /// The storyboard "PhotoDetailViewController", with the screen "PhotoDetailViewSB".
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared().
    explicit PhotoDetailViewController(const Services &services);

    /// Which photo; before the view is loaded.
    void setPhoto(std::optional<PhotoModel> photo) { photo_ = std::move(photo); }
    [[nodiscard]] const std::optional<PhotoModel> &photo() const { return photo_; }

    void viewDidLoad() override;

    Q_INVOKABLE void saveButtonTapped();
    Q_INVOKABLE void deleteButtonTapped();
    Q_INVOKABLE void dismissButtonTapped();
    /// The view cannot show the photo.
    Q_INVOKABLE void photoNotShown();

    [[nodiscard]] ViewOutlet *containerView() { return &containerView_; }
    [[nodiscard]] ImageOutlet *imageContainer() { return &imageContainer_; }
    [[nodiscard]] ButtonOutlet *saveButton() { return &saveButton_; }
    [[nodiscard]] ButtonOutlet *deleteButton() { return &deleteButton_; }
    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }
    [[nodiscard]] QString shownPhotoName() const; ///< for screen readers
    [[nodiscard]] LabelOutlet *damagedLabel() { return &damagedLabel_; }

private:
    void libraryRefused();
    void didSave(const LibraryChange &change);
    void askForReview();
    void showPopup(CustomPopupView::Contents contents);
    [[nodiscard]] std::shared_ptr<PhotoDetailViewController> self();

    const Services services_;
    PhotoDataManager photoDataManager_;
    LogManager logManager_;
    std::optional<PhotoModel> photo_;
    bool isSaving_ = false; ///< asked for, and no answer yet
    ViewOutlet containerView_;
    ImageOutlet imageContainer_;
    ButtonOutlet saveButton_;
    ButtonOutlet deleteButton_;
    ButtonOutlet closeButton_;
    LabelOutlet damagedLabel_;
};

} // namespace skyflare
