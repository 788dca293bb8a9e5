import QtQuick
import Skyflare.Ui

/// A button that is a text alone, for what is rarely wanted and not undone.
OutletButton {
    id: control

    implicitWidth: contentItem.implicitWidth + 20
    implicitHeight: Metrics.touchArea

    background: Item {
        Rectangle {
            anchors.fill: parent
            anchors.topMargin: 4
            anchors.bottomMargin: 4
            radius: 10
            color: control.down ? Theme.pressed : "transparent"
            FocusRing {
                anchors.margins: 0
                radius: 10
                target: control
            }
        }
    }
    contentItem: Text {
        text: control.text
        color: Theme.warning
        font.pixelSize: Metrics.labelSize
        font.weight: Font.DemiBold
        fontSizeMode: Text.HorizontalFit // a longer language stays on its one line
        minimumPixelSize: 11
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
