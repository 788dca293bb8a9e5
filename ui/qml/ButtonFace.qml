import QtQuick
import Skyflare.Ui

/// What stands on a filled button: its text, and a symbol before it.
Item {
    id: face

    property string text
    property string symbol

    implicitWidth: label.implicitWidth + label.anchors.leftMargin

    SymbolView {
        id: sign
        visible: face.symbol !== ""
        name: face.symbol
        color: Theme.accentColor
        width: 22
        height: 22
        anchors.verticalCenter: parent.verticalCenter
        x: (face.width - label.contentWidth - (face.text === "" ? width : width + 6)) / 2
    }
    Text {
        id: label
        anchors.fill: parent
        anchors.leftMargin: sign.visible ? 34 : 10
        anchors.rightMargin: sign.visible ? 6 : 10
        text: face.text
        color: Theme.accentColor
        font.pixelSize: Metrics.titleSize
        font.bold: true
        fontSizeMode: Text.HorizontalFit // a longer language stays on its one line
        minimumPixelSize: 11
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
}
