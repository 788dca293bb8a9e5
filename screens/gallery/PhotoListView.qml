import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// The gallery. Upright the head is above the grid, in a wide window beside it.
FocusScope {
    id: screen

    required property PhotoListViewController controller
    readonly property bool isWide: width >= 640 && width > height
    readonly property real headWidth: controller.isPad ? 260 : 208
    readonly property real room: isWide ? width - headWidth - Metrics.margin - 60 : width
    // Whole pixels for each of the three; not larger than a photo is good to look at.
    readonly property real gridWidth: Math.floor((Math.min(room, 904) - 4) / 3) * 3 + 4
    readonly property real edge: (width - gridWidth - (isWide ? headWidth + 60 : 0)) / 2

    focus: true

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }
    GalleryHead {
        id: head
        x: screen.edge
        y: screen.isWide ? 0 : 4
        width: screen.isWide ? screen.headWidth : screen.gridWidth
        height: screen.isWide ? screen.height : implicitHeight
        isBeside: screen.isWide
        controller: screen.controller
    }
    PhotoGrid {
        id: grid
        objectName: "collectionView"
        x: screen.edge + (screen.isWide ? screen.headWidth : 0)
        y: screen.isWide ? 0 : head.y + head.height
        width: screen.gridWidth
        height: screen.height - y
        collection: screen.controller.collectionView
        name: screen.controller.allPhotosLabel.text
        focus: true
    }
    IconButton {
        id: close
        objectName: "closeButton"
        x: screen.isWide ? grid.x + grid.width + 8 : grid.x + grid.width - width - 8
        y: screen.isWide ? 12 : head.y + (head.height - height) / 2
        outlet: screen.controller.closeButton
        ground: Theme.glass
        drawnSize: 36
        symbolSize: 20
        onClicked: screen.controller.dismissButtonTapped()
    }
    Binding {
        // Nothing else is there.
        target: close
        property: "focus"
        value: true
        when: screen.controller.collectionView.count === 0
        restoreMode: Binding.RestoreNone
    }
}
