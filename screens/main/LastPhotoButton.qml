import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The newest photo and how many there are; opens the gallery.
OutletButton {
    id: control

    required property ViewOutlet container
    required property ImageOutlet photo
    required property LabelOutlet count

    visible: !container.hidden
    focusPolicy: Qt.TabFocus
    Accessible.description: count.hidden ? "" : count.text

    background: Rectangle {
        radius: 14
        color: control.down ? Theme.overPicture : Theme.nightInk
        border.width: 1.5
        border.color: Theme.overPicture
        FocusRing {
            target: control
            radius: 20
            anchors.margins: -6
            border.width: 3
            border.color: Theme.overPicture
        }
    }
    contentItem: Item {
        PhotoView {
            objectName: "lastPhoto"
            anchors.fill: parent
            anchors.margins: 5
            outlet: control.photo
            clip: true
        }
        CountBadge {
            x: parent.width - width + 14
            y: -9
            outlet: control.count
        }
    }
}
