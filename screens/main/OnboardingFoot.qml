import QtQuick
import Skyflare.Ui

/// How far the onboarding is, and what a tap does.
Item {
    id: foot

    required property int index
    required property int count
    required property ButtonOutlet nextButton
    required property Item control // what has the focus
    readonly property real pitch: 18

    implicitHeight: 40

    Row {
        x: 6
        anchors.verticalCenter: parent.verticalCenter
        spacing: foot.pitch - 8
        Repeater {
            model: foot.count
            delegate: Rectangle {
                width: 8
                height: 8
                radius: 4
                color: Theme.secondary
                opacity: 0.35
            }
        }
    }
    Rectangle {
        x: foot.index * foot.pitch + 2
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 8
        radius: 4
        color: Theme.secondary
    }
    Rectangle {
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: label.implicitWidth + 36
        height: 40
        radius: 10
        color: Theme.secondary
        FocusRing {
            target: foot.control
        }
        Text {
            id: label
            anchors.centerIn: parent
            text: foot.nextButton.text
            color: Theme.accentColor
            font.pixelSize: Metrics.labelSize
            font.bold: true
            textFormat: Text.PlainText
            Accessible.ignored: true
        }
    }
}
