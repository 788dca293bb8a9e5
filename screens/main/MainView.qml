import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The camera screen: the live picture fills it, and all else floats on that.
FocusScope {
    id: screen

    required property MainViewController controller
    readonly property Places places: controller.isPad && width >= 960 ? wide : controller.isLandscape && width >= 560 ? side : stacked

    focus: true

    StackedPlaces {
        id: stacked
        width: screen.width
        height: screen.height
        selectorHeight: controls.selectorHeight
    }
    SidePlaces {
        id: side
        width: screen.width
        height: screen.height
        selectorHeight: controls.selectorHeight
    }
    WidePlaces {
        id: wide
        width: screen.width
        height: screen.height
        selectorHeight: controls.selectorHeight
    }
    Shortcut {
        // Where a list is open, Space chooses.
        sequence: "Space"
        enabled: screen.enabled && controls.openList === null
        onActivated: screen.controller.startStopKeyPressed()
    }
    Shortcut {
        // As its button: not while a run is on, nor over the explanations.
        sequence: "Ctrl+,"
        enabled: screen.enabled && !screen.controller.infoBar.hidden && screen.controller.onboardingView.hidden
        onActivated: screen.controller.settingsButtonTapped()
    }

    IdleSky {
        anchors.fill: parent
    }
    CameraContainer {
        anchors.fill: parent
        controller: screen.controller
    }
    MainControls {
        id: controls
        anchors.fill: parent
        controller: screen.controller
        places: screen.places
        enabled: screen.controller.onboardingView.hidden
        focus: enabled
    }
    OnboardingOverlay {
        objectName: "onboarding"
        anchors.fill: parent
        controller: screen.controller
        places: screen.places
        focus: visible
    }
}
