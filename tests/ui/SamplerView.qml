import QtQuick
import Skyflare.Sampler
import Skyflare.Ui

/// The small views that have a test of their own.
Rectangle {
    id: screen

    required property Sampler controller

    color: Theme.ground

    PreviewView {
        objectName: "preview"
        anchors.fill: parent
        previewLayer: screen.controller.previewLayer
    }
    Flow {
        anchors.fill: parent
        anchors.margins: Metrics.margin
        spacing: Metrics.gap

        Readout {
            caption: "Light power"
            outlet: screen.controller.statusText
        }
        PhotoView {
            objectName: "photo"
            width: 64
            height: 64
            outlet: screen.controller.photo
        }
        LabelView {
            objectName: "status"
            outlet: screen.controller.statusText
        }
        PaddedLabel {
            objectName: "padded"
            outlet: screen.controller.statusText
            wrapMode: Text.NoWrap
            color: Theme.secondaryText
        }
        ActionButton {
            objectName: "main"
            outlet: screen.controller.mainButton
            focus: true
            onClicked: screen.controller.mainButtonTapped()
        }
        IconButton {
            objectName: "gear"
            outlet: screen.controller.gearButton
            ground: Theme.glass
            drawnSize: 40
        }
        PhotoListCell {
            objectName: "cell"
            width: 100
            height: 100
            imageView.outlet: screen.controller.photo
        }
    }
}
