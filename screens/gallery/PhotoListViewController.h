#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/desktop/HapticFeedback.h"
#include "store/PhotoDataManager.h"
#include "ui/ButtonOutlet.h"
#include "ui/LabelOutlet.h"
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

namespace skyflare {

/// The gallery: so far its heading and the way back.
///
/// Threads: main. Borrows its Services, which must outlive it.
class PhotoListViewController : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::LabelOutlet *allPhotosLabel READ allPhotosLabel CONSTANT)
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
    explicit PhotoListViewController(const Services &services) : services_(services) {}

    void viewDidLoad() override;

    Q_INVOKABLE void dismissButtonTapped();

    [[nodiscard]] LabelOutlet *allPhotosLabel() { return &allPhotosLabel_; }
    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }

private:
    const Services services_;
    LabelOutlet allPhotosLabel_;
    ButtonOutlet closeButton_;
};

} // namespace skyflare
