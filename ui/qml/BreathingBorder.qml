import QtQuick
import Skyflare.Ui

/// The rim of the picture, which breathes while a run is on. Made of thin pieces, so that a renderer without a
/// graphics card repaints these and not the whole picture.
Item {
    id: rim

    property bool isRunning: false
    property real lineWidth: 3
    property real radius: 40
    readonly property color color: Theme.overPicture

    property real breath: 0

    opacity: isRunning ? breath : 0

    SequentialAnimation {
        running: rim.isRunning
        loops: Animation.Infinite
        NumberAnimation {
            target: rim
            property: "breath"
            from: 0
            to: 1
            duration: Metrics.breath
            easing.type: Easing.InOutQuad
        }
        NumberAnimation {
            target: rim
            property: "breath"
            from: 1
            to: 0
            duration: Metrics.breath
            easing.type: Easing.InOutQuad
        }
    }
    Rectangle {
        x: rim.radius
        width: rim.width - 2 * rim.radius
        height: rim.lineWidth
        color: rim.color
    }
    Rectangle {
        x: rim.radius
        y: rim.height - height
        width: rim.width - 2 * rim.radius
        height: rim.lineWidth
        color: rim.color
    }
    RimSide {
        y: rim.radius
        width: rim.lineWidth
        height: rim.height - 2 * rim.radius
    }
    RimSide {
        x: rim.width - width
        y: rim.radius
        width: rim.lineWidth
        height: rim.height - 2 * rim.radius
    }
    RimCorner {
        radius: rim.radius
        lineWidth: rim.lineWidth
        color: rim.color
    }
    RimCorner {
        radius: rim.radius
        lineWidth: rim.lineWidth
        color: rim.color
        isRight: true
    }
    RimCorner {
        radius: rim.radius
        lineWidth: rim.lineWidth
        color: rim.color
        isLower: true
    }
    RimCorner {
        radius: rim.radius
        lineWidth: rim.lineWidth
        color: rim.color
        isRight: true
        isLower: true
    }
}
