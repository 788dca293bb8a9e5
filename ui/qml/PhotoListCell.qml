import QtQuick
import Skyflare.Ui

/// One photo of the grid: fills the cell and is cut off at its edges.
Item {
    id: cell

    property alias imageView: photo

    Rectangle {
        anchors.fill: parent
        color: Theme.glass // until the photo is there
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
        // Inside, for the cells stand close to each other.
        anchors.fill: parent
        visible: cell.activeFocus && InputMode.isKeyboard
        color: "transparent"
        border.width: 3
        border.color: Theme.secondary
    }
}
