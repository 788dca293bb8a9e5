import QtQuick
import Skyflare.Ui

/// One upright side of a BreathingBorder, in pieces of 80: without a graphics card Qt 6.4 gives fills of 96 rows
/// and more to several threads, and has main wait for them.
Item {
    id: side

    Repeater {
        model: Math.max(0, Math.ceil(side.height / 80))
        delegate: Rectangle {
            required property int index

            y: index * 80
            width: parent ? parent.width : 0
            height: parent ? Math.min(80, parent.height - y) : 0
            color: Theme.overPicture
        }
    }
}
