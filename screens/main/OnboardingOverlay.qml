import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// Explains the screen in steps, each beside what it speaks of; a tap anywhere goes on.
BaseButton {
    id: overlay

    required property MainViewController controller
    required property Places places
    readonly property OnboardingView view: controller.onboardingView

    visible: !view.hidden
    Accessible.name: view.nextButton.accessibleName
    onClicked: controller.onboardingScreenTapped()

    OnboardingCard {
        index: 0
        view: overlay.view
        control: overlay
        isBeside: overlay.places.isSideways
    }
    OnboardingCard {
        index: 1
        view: overlay.view
        control: overlay
        subject: overlay.places.sensivity
        isBeside: overlay.places.isSideways
    }
    OnboardingCard {
        index: 2
        view: overlay.view
        control: overlay
        subject: overlay.places.frequency
        isBeside: overlay.places.isSideways
    }
    OnboardingCard {
        index: 3
        view: overlay.view
        control: overlay
        subject: overlay.places.mainButton
        isBeside: overlay.places.isSideways
    }
}
