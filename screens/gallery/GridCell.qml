import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// One cell among its GridCells, where the collection view puts it.
PhotoListCell {
    id: cell

    required property int index
    required property ImageOutlet photo
    required property rect frame
    required property string name
    required property bool current
    readonly property GridCells cells: parent as GridCells // null while it goes

    x: frame.x
    y: frame.y
    width: frame.width
    height: frame.height
    imageView.outlet: photo
    isCurrent: current
    focus: current
    Accessible.name: name
    onActiveFocusChanged: {
        if (activeFocus && InputMode.isKeyboard)
            cells.keysCame(frame);
    }
    onClicked: cells.collection.select(index)
}
