import QtQuick
import QtQuick.Templates as T
import Skyflare.Main
import Skyflare.Ui

/// Explains the screen in steps, each beside what it speaks of; a tap anywhere goes on.
T.AbstractButton {
    id: overlay

    required property MainViewController controller
    required property Places places
    readonly property OnboardingView view: controller.onboardingView

    visible: !view.hidden
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: view.nextButton.accessibleName
    Keys.onReturnPressed: overlay.clicked()
    Keys.onEnterPressed: overlay.clicked()
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
