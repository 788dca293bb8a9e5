#pragma once

#include "ui/ButtonOutlet.h"

#include <QList>
#include <QQmlListProperty>
#include <array>
#include <vector>

namespace skyflare {

/// One step of the onboarding: a heading and an explanation.
///
/// Threads: main. Owned by the overlay.
class OnboardingStep : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the overlay")
    Q_PROPERTY(skyflare::LabelOutlet *text1 READ text1 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *text2 READ text2 CONSTANT)

public:
    [[nodiscard]] LabelOutlet *text1() { return &text1_; } ///< the heading
    [[nodiscard]] LabelOutlet *text2() { return &text2_; } ///< the explanation

private:
    LabelOutlet text1_;
    LabelOutlet text2_;
};

/// The overlay that explains the screen: its subviews, those that are no buttons being its steps.
///
/// Threads: main. Owned by its controller.
class OnboardingView : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    /// In order; each is hidden but the one that is shown.
    Q_PROPERTY(QQmlListProperty<skyflare::OnboardingStep> steps READ shownSteps CONSTANT)
    /// Says "Next", on the last step "Done"; a tap on it is a tap on the overlay.
    Q_PROPERTY(skyflare::ButtonOutlet *nextButton READ nextButton CONSTANT)

public:
    OnboardingView();

    [[nodiscard]] OnboardingStep &step(std::size_t number) { return steps_.at(number); }
    [[nodiscard]] ButtonOutlet *nextButton() { return &nextButton_; }

    /// What it consists of; more may be put into it, which count as steps unless they are buttons.
    [[nodiscard]] const std::vector<ViewOutlet *> &subviews() const { return subviews_; }
    void addSubview(ViewOutlet &subview) { subviews_.push_back(&subview); }

    [[nodiscard]] int stepCount() const;
    /// Shows the step at that place among the subviews that are no buttons, and the overlay.
    void show(int step);

private:
    std::array<OnboardingStep, 4> steps_;
    ButtonOutlet nextButton_;
    std::vector<ViewOutlet *> subviews_;
    QList<OnboardingStep *> shown_;

    [[nodiscard]] std::vector<ViewOutlet *> stepViews() const;
    [[nodiscard]] QQmlListProperty<OnboardingStep> shownSteps() { return {this, &shown_}; }
};

} // namespace skyflare
