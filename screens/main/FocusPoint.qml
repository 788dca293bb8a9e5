import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The ring where the user has tapped to focus: comes, grows, waits, goes. Its controller takes it away.
Rectangle {
    id: ring

    required property FocusView modelData
    property real grown: 1 // drawn anew at each size: a scaled picture of a thin ring is ragged

    x: modelData.center.x - width / 2
    y: modelData.center.y - height / 2
    width: modelData.diameter * grown
    height: width
    radius: width / 2
    color: "transparent"
    border.width: modelData.borderWidth * grown
    border.color: Theme.overPicture
    opacity: 0

    SequentialAnimation {
        running: true
        NumberAnimation {
            target: ring
            property: "opacity"
            to: 1
            duration: ring.modelData.appearMs
        }
        NumberAnimation {
            target: ring
            property: "grown"
            to: ring.modelData.grownScale
            duration: ring.modelData.growMs
            easing.type: Easing.OutCubic
        }
        PauseAnimation {
            duration: ring.modelData.waitMs
        }
        NumberAnimation {
            target: ring
            property: "opacity"
            to: 0
            duration: ring.modelData.fadeMs
        }
    }
}
