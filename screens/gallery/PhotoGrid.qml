import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// The photos, as the collection view lays them out. One stop for Tab; arrows move inside.
FocusScope {
    id: grid

    required property CollectionView collection
    property string name

    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.List
    Accessible.name: name

    Component.onCompleted: collection.width = width
    onWidthChanged: {
        if (collection)
            collection.width = width;
    }
    Keys.onLeftPressed: collection.moveCurrent(CollectionView.Left)
    Keys.onRightPressed: collection.moveCurrent(CollectionView.Right)
    Keys.onUpPressed: collection.moveCurrent(CollectionView.Up)
    Keys.onDownPressed: collection.moveCurrent(CollectionView.Down)
    Shortcut {
        sequences: ["Home"]
        enabled: grid.activeFocus
        onActivated: grid.collection.moveCurrent(CollectionView.Home)
    }
    Shortcut {
        sequences: ["End"]
        enabled: grid.activeFocus
        onActivated: grid.collection.moveCurrent(CollectionView.End)
    }
    Flickable {
        id: photos
        objectName: "photos"
        anchors.fill: parent
        contentHeight: grid.collection.contentHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        GridCells {
            width: grid.width
            collection: grid.collection
            // Where the keys go is seen; what a hand has scrolled to stays.
            onKeysCame: frame => photos.contentY = Math.min(frame.y, Math.max(photos.contentY, frame.y + frame.height - photos.height))

            Repeater {
                model: grid.collection
                delegate: GridCell {
                    objectName: "PhotoCell"
                }
            }
        }
    }
    Rectangle {
        // How far down.
        x: grid.width - width - 2
        y: photos.visibleArea.yPosition * grid.height
        width: 3
        height: photos.visibleArea.heightRatio * grid.height
        radius: 1.5
        visible: photos.visibleArea.heightRatio < 1
        opacity: photos.moving ? 0.9 : 0.35
        color: Theme.overPicture
    }
}
