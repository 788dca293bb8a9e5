import QtQuick
import Skyflare.Ui

/// Starts and stops; the largest thing on the screen. Full of light while it waits, a ring while a run is on.
OutletButton {
    id: control

    property bool isRunning: false

    background: Rectangle {
        radius: width / 2
        color: Theme.nightInk
        border.width: 3
        border.color: Theme.overPicture
        scale: control.down ? 0.97 : 1

        Rectangle {
            anchors.fill: parent
            anchors.margins: 8
            radius: width / 2
            color: Theme.overPicture
            opacity: control.isRunning ? 0 : 1
            Behavior on opacity {
                NumberAnimation {
                    duration: Metrics.usual
                }
            }
        }
        FocusRing {
            target: control
            radius: width / 2
            anchors.margins: -7
            border.width: 3
            border.color: Theme.overPicture
        }
    }
    contentItem: Text {
        leftPadding: 14
        rightPadding: 14
        text: control.text
        color: control.isRunning ? Theme.overPicture : Theme.nightInk
        font.pixelSize: 19
        font.bold: true
        fontSizeMode: Text.HorizontalFit // a longer language stays on its one line
        minimumPixelSize: 11
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
