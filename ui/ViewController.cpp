#include "ui/ViewController.h"

#include "ui/CustomPopupView.h"
#include "ui/SizeClass.h"

#include <string_view>

namespace skyflare {

std::string ViewController::className() const
{
    const std::string_view qualified = metaObject()->className();
    const auto colon = qualified.rfind(':');
    return std::string(colon == std::string_view::npos ? qualified : qualified.substr(colon + 1));
}

void ViewController::loadViewIfNeeded()
{
    if (isViewLoaded_)
        return;
    isViewLoaded_ = true; // first: what it shows in viewDidLoad asks for it again
    viewDidLoad();
}

void ViewController::present(std::shared_ptr<ViewController> controller, Animated animated)
{
    if (presented_)
        return;
    presented_ = std::move(controller);
    presented_->presenting_ = weak_from_this();
    presented_->transition_ = animated;
    presented_->loadViewIfNeeded();
    emit hierarchyChanged();
}

void ViewController::dismiss(Animated animated)
{
    if (!presented_) {
        if (const auto presenting = presenting_.lock())
            presenting->dismiss(animated);
        return;
    }
    const auto leaving = std::move(presented_);
    presented_ = nullptr;
    leaving->presenting_.reset();
    leaving->transition_ = animated;
    emit hierarchyChanged();
}

void ViewController::escapePressed()
{
    if (popups_.count() > 0)
        popups_.popups().back()->dismissPopupWithVibrate(true);
    else if (!presenting_.expired())
        dismiss(Animated::Yes);
}

void ViewController::addPopup(std::shared_ptr<CustomPopupView> popup)
{
    popup->setFrame(bounds_);
    connect(popup.get(), &CustomPopupView::removedFromSuperview, this,
            [this, shown = popup.get()] { popups_.remove(shown); });
    popups_.append(std::move(popup));
}

void ViewController::setBounds(const QRectF &bounds)
{
    if (bounds_ == bounds)
        return;
    bounds_ = bounds;
    for (const auto &popup : popups_.popups())
        popup->setFrame(bounds);
    emit boundsChanged();
}

bool ViewController::isPad() const
{
    return interfaceIdiom(bounds_.size()) == InterfaceIdiom::Pad;
}

bool ViewController::isLandscape() const
{
    return !isPad() && bounds_.width() > bounds_.height();
}

} // namespace skyflare
