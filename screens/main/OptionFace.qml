import QtQuick
import Skyflare.Ui

/// What stands on an option.
Item {
    id: face

    property string text
    property bool isChosen: false

    implicitHeight: label.implicitHeight + 12

    Text {
        id: label
        anchors.verticalCenter: parent.verticalCenter
        x: 10
        width: sign.x - x - 4
        text: face.text
        color: face.isChosen ? Theme.secondary : Theme.text
        font.pixelSize: Metrics.labelSize
        font.weight: face.isChosen ? Font.DemiBold : Font.Normal
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    SymbolView {
        id: sign
        anchors.verticalCenter: parent.verticalCenter
        x: parent.width - width - 8
        width: 20
        height: 20
        name: face.isChosen ? "checkmark.circle" : ""
        color: Theme.secondary
    }
}
