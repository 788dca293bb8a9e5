#include "ui/CustomPopupView.h"

#include "platform/base/Localization.h"
#include "ui/SharedObject.h"
#include "ui/SizeClass.h"
#include "ui/ViewController.h"

namespace skyflare {

std::shared_ptr<CustomPopupView> CustomPopupView::make(HapticFeedback &haptics, Contents contents)
{
    return makeShared<CustomPopupView>(haptics, std::move(contents));
}

CustomPopupView::CustomPopupView(HapticFeedback &haptics, Contents contents)
    : haptics_(haptics), dismissable_(contents.dismissable), tapAction_(std::move(contents.tapAction))
{
    if (contents.icon)
        icon_.emplace().setSymbol(*contents.icon);
    titleLabel_.setText(contents.title);
    descriptionLabel_.setText(contents.description);
    button_.setText(contents.buttonTitle.value_or(""));
    // A button without a title has one for those who cannot see it.
    if (button_.text().empty())
        button_.setAccessibleName(localized("OK"));
    dismissButton_.setAccessibleName(localized("Close"));
    dismissButton_.setHidden(!isDismissable());
}

void CustomPopupView::show(ViewController &on)
{
    on.addPopup(shared_from_this());
    haptics_.impactOccurred(ImpactFeedbackStyle::Medium);
}

void CustomPopupView::buttonTapped()
{
    const auto self = shared_from_this(); // the action may take the whole screen away
    haptics_.impactOccurred(ImpactFeedbackStyle::Medium);
    if (tapAction_)
        tapAction_();
    if (isDismissable())
        removeFromSuperview();
}

void CustomPopupView::dismissPopupWithVibrate(bool vibrate)
{
    const auto self = shared_from_this();
    if (!isDismissable())
        return;
    if (vibrate)
        haptics_.impactOccurred(ImpactFeedbackStyle::Medium);
    removeFromSuperview();
}

void CustomPopupView::removeFromSuperview()
{
    emit removedFromSuperview();
    tapAction_ = nullptr; // what it holds goes now, not when the last view has let go of the popup
}

void CustomPopupView::setFrame(const QRectF &frame)
{
    if (frame_ == frame)
        return;
    frame_ = frame;
    emit frameChanged();
}

double CustomPopupView::cardWidth() const
{
    return frame_.width() * (interfaceIdiom(frame_.size()) == InterfaceIdiom::Pad ? 0.4 : 0.8);
}

} // namespace skyflare
