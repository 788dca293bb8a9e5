import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The live picture with what is drawn on it. A tap on it is a place to focus on.
Item {
    id: container

    required property MainViewController controller

    visible: !controller.cameraContainerView.hidden

    PreviewView {
        objectName: "preview"
        anchors.fill: parent
        previewLayer: container.controller.previewLayer
    }
    MouseArea {
        objectName: "cameraArea"
        anchors.fill: parent
        onClicked: mouse => container.controller.focusPointTapped(Qt.point(mouse.x, mouse.y))
    }
    Repeater {
        // A new ring for each tap: its view begins anew.
        model: container.controller.focusView ? [container.controller.focusView] : []
        delegate: FocusPoint {}
    }
    BreathingBorder {
        objectName: "cameraBorder"
        anchors.fill: parent
        anchors.margins: 4
        isRunning: container.controller.cameraBorderView.alpha > 0
    }
}
