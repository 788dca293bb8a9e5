import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// The gallery: its heading and the way back.
FocusScope {
    id: screen

    required property PhotoListViewController controller

    focus: true

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }
    LabelView {
        objectName: "allPhotosLabel"
        anchors.verticalCenter: close.verticalCenter
        x: Metrics.margin
        width: close.x - x - 8
        outlet: screen.controller.allPhotosLabel
        font.pixelSize: Metrics.headingSize
        font.bold: true
        Accessible.role: Accessible.Heading
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
