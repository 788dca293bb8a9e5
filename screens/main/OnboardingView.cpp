#include "screens/main/OnboardingView.h"

#include "platform/base/Localization.h"

namespace skyflare {

OnboardingView::OnboardingView()
{
    for (OnboardingStep &step : steps_) {
        addSubview(step);
        shown_.append(&step);
    }
    addSubview(nextButton_);
    setHidden(true);
}

std::vector<ViewOutlet *> OnboardingView::stepViews() const
{
    std::vector<ViewOutlet *> steps;
    for (ViewOutlet *subview : subviews_) {
        if (qobject_cast<ButtonOutlet *>(subview) == nullptr)
            steps.push_back(subview);
    }
    return steps;
}

int OnboardingView::stepCount() const
{
    return static_cast<int>(stepViews().size());
}

void OnboardingView::show(int step)
{
    int position = 0;
    for (ViewOutlet *view : stepViews())
        view->setHidden(position++ != step);
    nextButton_.setText(localized(step + 1 < position ? "Next" : "Done"));
    setHidden(false);
}

} // namespace skyflare
