import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// One photo: so far the way back.
FocusScope {
    id: screen

    required property PhotoDetailViewController controller

    focus: true

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }
    IconButton {
        id: close
        objectName: "closeButton"
        x: screen.width - width - 8
        y: 8
        outlet: screen.controller.closeButton
        focus: true
        onClicked: screen.controller.dismissButtonTapped()
    }
}
