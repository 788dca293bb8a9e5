import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The name of the app, and the ways to the explanations and the settings; not while a run is on.
GlassPanel {
    id: bar

    required property MainViewController controller

    visible: !controller.infoBar.hidden

    MouseArea {
        anchors.fill: parent // a tap beside a button is no tap on the sky
    }
    Text {
        anchors.verticalCenter: parent.verticalCenter
        x: Metrics.panelPadding + 4
        width: buttons.x - x - 8
        text: "Skyflare"
        color: Theme.text
        font.pixelSize: Metrics.titleSize
        font.weight: Font.DemiBold
        textFormat: Text.PlainText
        elide: Text.ElideRight
        Accessible.ignored: !(parent && parent.enabled) // covered by something else
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Row {
        id: buttons
        anchors.verticalCenter: parent.verticalCenter
        anchors.right: parent.right
        anchors.rightMargin: 6

        IconButton {
            objectName: "infoButton"
            outlet: bar.controller.infoButton
            drawnSize: 40
            symbolSize: 24
            tint: Theme.text
            focusPolicy: Qt.TabFocus
            onClicked: bar.controller.infoButtonTapped()
        }
        IconButton {
            objectName: "settingsButton"
            outlet: bar.controller.settingsButton
            drawnSize: 40
            symbolSize: 24
            tint: Theme.text
            focusPolicy: Qt.TabFocus
            onClicked: bar.controller.settingsButtonTapped()
        }
    }
}
