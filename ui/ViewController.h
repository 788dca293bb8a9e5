#pragma once

#include "ui/PopupList.h"

#include <QObject>
#include <QQmlEngine>
#include <QRectF>
#include <QUrl>
#include <cstdint>
#include <memory>
#include <string>

namespace skyflare {

class CustomPopupView;
class MainNavigationController;

enum class Animated { No, Yes };
enum class ModalPresentationStyle { Automatic, FullScreen };

/// What one screen does; its QML file, the view, only shows it. Works without a window just as well.
///
/// Threads: main. Made by makeShared() or a Storyboard. Owns its popups and the screen that it presents.
class ViewController : public QObject, public std::enable_shared_from_this<ViewController> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by a storyboard")
    Q_PROPERTY(skyflare::PopupList *popups READ popups CONSTANT)
    Q_PROPERTY(QRectF bounds READ bounds NOTIFY boundsChanged)
    Q_PROPERTY(bool isPad READ isPad NOTIFY boundsChanged)
    Q_PROPERTY(bool isLandscape READ isLandscape NOTIFY boundsChanged)

public:
    /// Its own for its life: no other controller of the process has it.
    [[nodiscard]] std::uint64_t instanceID() const { return instanceID_; }
    /// Such as "MainViewController".
    [[nodiscard]] std::string className() const;

    /// Calls viewDidLoad(), once. Whatever brings a controller on the screen does this first.
    void loadViewIfNeeded();
    [[nodiscard]] bool isViewLoaded() const { return isViewLoaded_; }
    virtual void viewDidLoad() {}

    // presentViewController:animated:
    /// Shows `controller` over everything. While one is presented already, a second is ignored: a double
    /// tap opens one screen.
    void present(std::shared_ptr<ViewController> controller, Animated animated);
    /// Takes away the screen that this one presents, or, if it presents none, this one.
    void dismiss(Animated animated);
    [[nodiscard]] const std::shared_ptr<ViewController> &presentedViewController() const
    {
        return presented_;
    }
    [[nodiscard]] std::shared_ptr<ViewController> presentingViewController() const
    {
        return presenting_.lock();
    }
    /// The container that it was pushed on; empty for one that was presented.
    [[nodiscard]] std::shared_ptr<MainNavigationController> navigationController() const
    {
        return navigation_.lock();
    }
    void setNavigationController(std::weak_ptr<MainNavigationController> navigation)
    {
        navigation_ = std::move(navigation);
    }
    /// The controller whose view stands for this one: a container's is that of its top screen.
    [[nodiscard]] virtual std::shared_ptr<ViewController> shownViewController() { return shared_from_this(); }
    /// How it comes onto the screen, or goes.
    void setTransition(Animated animated) { transition_ = animated; }
    [[nodiscard]] bool isTransitionAnimated() const { return transition_ == Animated::Yes; }

    /// The Esc or back key: the close control of the newest popup; else closes a screen that was presented.
    virtual void escapePressed();

    void addPopup(std::shared_ptr<CustomPopupView> popup);
    [[nodiscard]] PopupList *popups() { return &popups_; }

    /// The root view's, in logical pixels; empty until it is shown.
    [[nodiscard]] QRectF bounds() const { return bounds_; }
    void setBounds(const QRectF &bounds);
    [[nodiscard]] bool isPad() const;
    /// A phone that lies on its side. A pad has room either way.
    [[nodiscard]] bool isLandscape() const;

    /// The QML file of the view; set by the storyboard.
    [[nodiscard]] const QUrl &viewUrl() const { return viewUrl_; }
    void setViewUrl(QUrl url) { viewUrl_ = std::move(url); }
    [[nodiscard]] ModalPresentationStyle modalPresentationStyle() const { return modalPresentationStyle_; }
    void setModalPresentationStyle(ModalPresentationStyle style) { modalPresentationStyle_ = style; }

    /// The view says that its way onto the screen, or from it, is over.
    Q_INVOKABLE void viewDidAppear() { emit appeared(); }
    Q_INVOKABLE void viewDidDisappear() { emit disappeared(); }

signals:
    void appeared();
    void disappeared();
    void boundsChanged();
    /// Something is shown over, or in, this controller that was not, or no longer is.
    void hierarchyChanged();

private:
    static inline std::uint64_t newestInstanceID_ = 0;
    const std::uint64_t instanceID_ = ++newestInstanceID_;
    bool isViewLoaded_ = false;
    Animated transition_ = Animated::No;
    ModalPresentationStyle modalPresentationStyle_ = ModalPresentationStyle::Automatic;
    QUrl viewUrl_;
    QRectF bounds_;
    PopupList popups_;
    std::shared_ptr<ViewController> presented_;
    std::weak_ptr<ViewController> presenting_;
    std::weak_ptr<MainNavigationController> navigation_;
};

} // namespace skyflare
