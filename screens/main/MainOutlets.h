#pragma once

#include "screens/main/FocusView.h"
#include "screens/main/OnboardingView.h"
#include "screens/main/SelectionContainer.h"
#include "ui/ButtonOutlet.h"
#include "ui/ImageOutlet.h"
#include "ui/LightCurve.h"
#include "ui/ViewController.h"

namespace skyflare {

/// What the main screen says to its view: a part with a name of its own for each thing that is seen.
///
/// Threads: main. The base of the screen's controller, which alone writes them.
class MainOutlets : public skyflare::ViewController {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the base of MainViewController")

    // The two selectors. A tap on a label's row opens its container.
    Q_PROPERTY(skyflare::LabelOutlet *sensivityTitle READ sensivityTitle CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *frequencyTitle READ frequencyTitle CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *sensivityLabel READ sensivityLabel CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *frequencyLabel READ frequencyLabel CONSTANT)
    Q_PROPERTY(skyflare::SelectionContainer *sensitivitySelectionsContainer READ
                   sensitivitySelectionsContainer CONSTANT)
    Q_PROPERTY(
        skyflare::SelectionContainer *frequencySelectionsContainer READ frequencySelectionsContainer CONSTANT)

    // The camera and what is written on it. The border's alpha is 1 while it pulses, else 0; the indicator's
    // is 0, and each `captureFlashes` of the controller lets it flash.
    Q_PROPERTY(skyflare::ViewOutlet *cameraBorderView READ cameraBorderView CONSTANT)
    Q_PROPERTY(skyflare::ViewOutlet *cameraContainerView READ cameraContainerView CONSTANT)
    Q_PROPERTY(skyflare::ImageOutlet *actionImage READ actionImage CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *simulatedCameraLabel READ simulatedCameraLabel CONSTANT)
    Q_PROPERTY(skyflare::ViewOutlet *infoBar READ infoBar CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *statusText READ statusText CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *lightPowerTitle READ lightPowerTitle CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *lightPowerLabel READ lightPowerLabel CONSTANT)
    Q_PROPERTY(skyflare::LightCurve *lightCurve READ lightCurve CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *lastDifferenceTitle READ lastDifferenceTitle CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *lastDifferenceLabel READ lastDifferenceLabel CONSTANT)

    // What is tapped. Buttons of one symbol have an accessible name.
    Q_PROPERTY(skyflare::ButtonOutlet *mainButton READ mainButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *infoButton READ infoButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *settingsButton READ settingsButton CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *lastPhotoButton READ lastPhotoButton CONSTANT)
    Q_PROPERTY(skyflare::ViewOutlet *lastPhotoContainer READ lastPhotoContainer CONSTANT)
    Q_PROPERTY(skyflare::ImageOutlet *lastPhotoImageView READ lastPhotoImageView CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *photoCountLabel READ photoCountLabel CONSTANT)

    // The onboarding over all of it.
    Q_PROPERTY(skyflare::OnboardingView *onboardingView READ onboardingView CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step0_text1 READ step0_text1 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step0_text2 READ step0_text2 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step1_text1 READ step1_text1 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step1_text2 READ step1_text2 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step2_text1 READ step2_text1 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step2_text2 READ step2_text2 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step3_text1 READ step3_text1 CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *step3_text2 READ step3_text2 CONSTANT)

public:
    [[nodiscard]] LabelOutlet *sensivityTitle() { return &sensivityTitle_; }
    [[nodiscard]] LabelOutlet *frequencyTitle() { return &frequencyTitle_; }
    [[nodiscard]] LabelOutlet *sensivityLabel() { return &sensivityLabel_; }
    [[nodiscard]] LabelOutlet *frequencyLabel() { return &frequencyLabel_; }
    [[nodiscard]] SelectionContainer *sensitivitySelectionsContainer()
    {
        return &sensitivitySelectionsContainer_;
    }
    [[nodiscard]] SelectionContainer *frequencySelectionsContainer()
    {
        return &frequencySelectionsContainer_;
    }
    [[nodiscard]] ViewOutlet *cameraBorderView() { return &cameraBorderView_; }
    [[nodiscard]] ViewOutlet *cameraContainerView() { return &cameraContainerView_; }
    [[nodiscard]] ImageOutlet *actionImage() { return &actionImage_; }
    [[nodiscard]] LabelOutlet *simulatedCameraLabel() { return &simulatedCameraLabel_; }
    [[nodiscard]] ViewOutlet *infoBar() { return &infoBar_; }
    [[nodiscard]] LabelOutlet *statusText() { return &statusText_; }
    [[nodiscard]] LabelOutlet *lightPowerTitle() { return &lightPowerTitle_; }
    [[nodiscard]] LabelOutlet *lightPowerLabel() { return &lightPowerLabel_; }
    [[nodiscard]] LightCurve *lightCurve() { return &lightCurve_; }
    [[nodiscard]] LabelOutlet *lastDifferenceTitle() { return &lastDifferenceTitle_; }
    [[nodiscard]] LabelOutlet *lastDifferenceLabel() { return &lastDifferenceLabel_; }
    [[nodiscard]] ButtonOutlet *mainButton() { return &mainButton_; }
    [[nodiscard]] ButtonOutlet *infoButton() { return &infoButton_; }
    [[nodiscard]] ButtonOutlet *settingsButton() { return &settingsButton_; }
    [[nodiscard]] ButtonOutlet *lastPhotoButton() { return &lastPhotoButton_; }
    [[nodiscard]] ViewOutlet *lastPhotoContainer() { return &lastPhotoContainer_; }
    [[nodiscard]] ImageOutlet *lastPhotoImageView() { return &lastPhotoImageView_; }
    [[nodiscard]] LabelOutlet *photoCountLabel() { return &photoCountLabel_; }
    [[nodiscard]] OnboardingView *onboardingView() { return &onboardingView_; }
    [[nodiscard]] LabelOutlet *step0_text1() { return onboardingView_.step(0).text1(); }
    [[nodiscard]] LabelOutlet *step0_text2() { return onboardingView_.step(0).text2(); }
    [[nodiscard]] LabelOutlet *step1_text1() { return onboardingView_.step(1).text1(); }
    [[nodiscard]] LabelOutlet *step1_text2() { return onboardingView_.step(1).text2(); }
    [[nodiscard]] LabelOutlet *step2_text1() { return onboardingView_.step(2).text1(); }
    [[nodiscard]] LabelOutlet *step2_text2() { return onboardingView_.step(2).text2(); }
    [[nodiscard]] LabelOutlet *step3_text1() { return onboardingView_.step(3).text1(); }
    [[nodiscard]] LabelOutlet *step3_text2() { return onboardingView_.step(3).text2(); }

protected:
    /// As they stand before anything has happened, texts and options in the user's language.
    void setUpOutlets();

private:
    void setUpTexts();
    void setUpOptions();

    LabelOutlet sensivityTitle_;
    LabelOutlet frequencyTitle_;
    LabelOutlet sensivityLabel_;
    LabelOutlet frequencyLabel_;
    SelectionContainer sensitivitySelectionsContainer_;
    SelectionContainer frequencySelectionsContainer_;
    ViewOutlet cameraBorderView_;
    ViewOutlet cameraContainerView_;
    ImageOutlet actionImage_;
    LabelOutlet simulatedCameraLabel_;
    ViewOutlet infoBar_;
    LabelOutlet statusText_;
    LabelOutlet lightPowerTitle_;
    LabelOutlet lightPowerLabel_;
    LightCurve lightCurve_;
    LabelOutlet lastDifferenceTitle_;
    LabelOutlet lastDifferenceLabel_;
    ButtonOutlet mainButton_;
    ButtonOutlet infoButton_;
    ButtonOutlet settingsButton_;
    ButtonOutlet lastPhotoButton_;
    ViewOutlet lastPhotoContainer_;
    ImageOutlet lastPhotoImageView_;
    LabelOutlet photoCountLabel_;
    OnboardingView onboardingView_;
};

} // namespace skyflare
