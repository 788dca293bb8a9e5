import QtQuick
import Skyflare.Ui

/// One photo of the grid: fills the cell and is cut off at its edges.
BaseButton {
    id: cell

    property alias imageView: photo
    property bool isCurrent: false // the one of its grid that Tab comes to

    focusPolicy: isCurrent ? Qt.StrongFocus : Qt.ClickFocus

    Rectangle {
        anchors.fill: parent
        color: Theme.nightInk // until the photo is there
        SymbolView {
            id: sign
            anchors.centerIn: parent
            width: 28
            height: 28
            name: "photo"
            color: Theme.overPicture
            opacity: 0
            // Only where the photo is long in coming, or cannot be shown.
            SequentialAnimation {
                running: true
                PauseAnimation {
                    duration: 800
                }
                NumberAnimation {
                    target: sign
                    property: "opacity"
                    to: 0.5
                    duration: Metrics.usual
                }
            }
        }
    }
    PhotoView {
        id: photo
        x: 0
        y: 0
        width: cell.width
        height: cell.height
        fillMode: PhotoView.AspectFill
        clip: true
    }
    Rectangle {
        anchors.fill: parent
        visible: cell.down
        color: Theme.pressed
    }
    Rectangle {
        // Inside, for the cells stand close to each other.
        anchors.fill: parent
        visible: cell.activeFocus && InputMode.isKeyboard
        color: "transparent"
        border.width: 3
        border.color: Theme.overPicture
    }
}
