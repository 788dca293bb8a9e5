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
#include "ui/Storyboard.h"
#include "ui/ViewController.h"

#include <string>

namespace skyflare {

/// One photo, with what can be done with it: so far the way back.
///
/// Threads: main. Borrows its Services, which must outlive it.
class PhotoDetailViewController : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by its storyboard")
    Q_PROPERTY(skyflare::ButtonOutlet *closeButton READ closeButton CONSTANT)

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
        std::string supportAddress; ///< an e-mail address
    };

    /// The storyboard "PhotoDetailViewController", with the screen "PhotoDetailViewSB".
    static Storyboard storyboard(const Services &services);

    /// Made by makeShared().
    explicit PhotoDetailViewController(const Services &services) : services_(services) {}

    void viewDidLoad() override;

    Q_INVOKABLE void dismissButtonTapped();

    [[nodiscard]] ButtonOutlet *closeButton() { return &closeButton_; }

private:
    const Services services_;
    ButtonOutlet closeButton_;
};

} // namespace skyflare
