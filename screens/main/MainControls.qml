import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// What floats on the picture, each part at its place; Tab goes through it in this order.
FocusScope {
    id: controls

    required property MainViewController controller
    required property Places places
    readonly property real selectorHeight: Math.max(sensivity.implicitHeight, frequency.implicitHeight)
    readonly property Item openList: !sensivityOptions.container.hidden ? sensivityOptions : !frequencyOptions.container.hidden ? frequencyOptions : null
    property Item opener: mainButton

    // The focus goes into a list with those who use the keyboard, and back to where they came from.
    onOpenListChanged: (openList ? openList : InputMode.isKeyboard ? opener : mainButton).focus = true

    InfoBar {
        x: controls.places.infoBar.x
        y: controls.places.infoBar.y
        width: controls.places.infoBar.width
        height: controls.places.infoBar.height
        controller: controls.controller
    }
    StatusPill {
        x: controls.places.statusText.x + (controls.places.statusText.width - width) / 2
        y: controls.places.statusText.y
        mostWidth: controls.places.statusText.width
        outlet: controls.controller.statusText
        isWarning: controls.controller.isStatusWarning
    }
    SimulatedMark {
        x: controls.places.simulatedMark.x + controls.places.simulatedMark.width - width
        y: controls.places.simulatedMark.y + (controls.places.simulatedMark.height - height) / 2
        mostWidth: controls.places.simulatedMark.width
        outlet: controls.controller.simulatedCameraLabel
    }
    ReadoutPanel {
        x: controls.places.readouts.x
        y: controls.places.readouts.y
        width: controls.places.readouts.width
        height: controls.places.readouts.height
        visible: y > controls.places.statusText.y + controls.places.statusText.height // or the window is too low
        controller: controls.controller
    }
    Selector {
        id: sensivity
        objectName: "sensivityButton"
        x: controls.places.sensivity.x
        y: controls.places.sensivity.y
        width: controls.places.sensivity.width
        height: controls.places.sensivity.height
        title: controls.controller.sensivityTitle
        value: controls.controller.sensivityLabel
        isOpen: controls.openList === sensivityOptions
        isSideways: controls.places.isSideways
        onClicked: {
            controls.opener = sensivity;
            controls.controller.sensivityButtonTapped();
        }
    }
    OptionList {
        id: sensivityOptions
        objectName: "sensivityOptions"
        z: 1
        place: controls.places.sensivityOptions
        container: controls.controller.sensitivitySelectionsContainer
        title: controls.controller.sensivityTitle
        chosen: controls.controller.sensivityLabel
        onPicked: option => controls.controller.sensivitySelected(option)
    }
    Selector {
        id: frequency
        objectName: "frequencyButton"
        x: controls.places.frequency.x
        y: controls.places.frequency.y
        width: controls.places.frequency.width
        height: controls.places.frequency.height
        title: controls.controller.frequencyTitle
        value: controls.controller.frequencyLabel
        isOpen: controls.openList === frequencyOptions
        isSideways: controls.places.isSideways
        onClicked: {
            controls.opener = frequency;
            controls.controller.frequencyButtonTapped();
        }
    }
    OptionList {
        id: frequencyOptions
        objectName: "frequencyOptions"
        z: 1
        place: controls.places.frequencyOptions
        container: controls.controller.frequencySelectionsContainer
        title: controls.controller.frequencyTitle
        chosen: controls.controller.frequencyLabel
        onPicked: option => controls.controller.frequencySelected(option)
    }
    MainButton {
        id: mainButton
        objectName: "mainButton"
        x: controls.places.mainButton.x
        y: controls.places.mainButton.y
        width: controls.places.mainButton.width
        height: controls.places.mainButton.height
        outlet: controls.controller.mainButton
        isRunning: controls.controller.isRunning
        focus: true
        onIsRunningChanged: focus = true // the control that had it may be hidden now
        onClicked: controls.controller.mainButtonTapped()
    }
    LastPhotoButton {
        objectName: "lastPhotoButton"
        x: controls.places.lastPhoto.x
        y: controls.places.lastPhoto.y
        width: controls.places.lastPhoto.width
        height: controls.places.lastPhoto.height
        container: controls.controller.lastPhotoContainer
        outlet: controls.controller.lastPhotoButton
        photo: controls.controller.lastPhotoImageView
        count: controls.controller.photoCountLabel
        onClicked: controls.controller.lastPhotoButtonTapped()
    }
}
