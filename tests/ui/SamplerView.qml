import QtQuick
import Skyflare.Sampler
import Skyflare.Ui

/// One of everything.
Rectangle {
    id: screen

    required property Sampler controller

    color: Theme.ground

    PreviewView {
        objectName: "preview"
        anchors.fill: parent
        previewLayer: screen.controller.previewLayer
    }
    BreathingBorder {
        anchors.fill: parent
        isRunning: screen.controller.previewLayer !== null
    }
    Flow {
        anchors.fill: parent
        anchors.margins: Metrics.margin
        spacing: Metrics.gap

        GlassPanel {
            width: Math.min(parent.width, 358)
            height: 96

            Readout {
                x: Metrics.panelPadding
                y: Metrics.panelPadding
                caption: "Light power"
                outlet: screen.controller.lightPowerLabel
            }
            LightCurveView {
                objectName: "curve"
                x: 110
                y: 20
                width: 160
                height: 56
                curve: screen.controller.lightCurve
                color: Theme.secondary
                riseColor: Theme.secondaryText
            }
            PhotoView {
                objectName: "photo"
                x: 284
                y: 16
                width: 64
                height: 64
                outlet: screen.controller.photo
            }
        }
        LabelView {
            objectName: "status"
            outlet: screen.controller.statusText
        }
        Rectangle {
            color: "transparent"
            border.color: Theme.glassBorder
            width: padded.width
            height: padded.height
            PaddedLabel {
                id: padded
                objectName: "padded"
                outlet: screen.controller.statusText
                wrapMode: Text.NoWrap
                color: Theme.secondaryText
            }
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
        Repeater {
            model: screen.controller.symbols
            delegate: SymbolView {
                required property string modelData
                width: 36
                height: 36
                name: modelData
                color: Theme.secondary
            }
        }
        Repeater {
            model: ["trash", "gear", "globe"]
            delegate: SymbolView {
                required property string modelData
                width: 18
                height: 18
                name: modelData
                color: Theme.text
            }
        }
    }
}
