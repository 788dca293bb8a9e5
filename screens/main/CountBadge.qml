import QtQuick
import Skyflare.Ui

/// How many there are, on a corner.
Rectangle {
    id: badge

    required property LabelOutlet outlet

    visible: !outlet.hidden
    width: Math.max(32, number.implicitWidth + 16)
    height: 22
    radius: 11
    color: Theme.overPicture

    Text {
        id: number
        anchors.centerIn: parent
        text: badge.outlet.text
        color: Theme.nightInk
        font.pixelSize: 13
        font.bold: true
        textFormat: Text.PlainText
        Accessible.ignored: true
    }
}
