import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// Dims the screen but for one place with round corners, or, without a place, all of it.
Item {
    id: light

    property rect place // in this item
    property bool isRound: false
    readonly property real rightEdge: place.x + place.width
    readonly property real lowerEdge: place.y + place.height
    readonly property real radius: isRound ? place.width / 2 : Metrics.panelRadius + 6
    readonly property bool hasPlace: place.width > 0

    Item {
        anchors.fill: parent
        opacity: 0.6

        Rectangle {
            width: light.width
            height: light.place.y
            color: "black"
        }
        Rectangle {
            y: light.lowerEdge
            width: light.width
            height: light.height - y
            color: "black"
        }
        Rectangle {
            y: light.place.y
            width: light.place.x
            height: light.place.height
            color: "black"
        }
        Rectangle {
            x: light.rightEdge
            y: light.place.y
            width: light.width - x
            height: light.place.height
            color: "black"
        }
        SpotlightCorner {
            visible: light.hasPlace
            x: light.place.x
            y: light.place.y
            radius: light.radius
        }
        SpotlightCorner {
            visible: light.hasPlace
            x: light.rightEdge - width
            y: light.place.y
            radius: light.radius
            isRight: true
        }
        SpotlightCorner {
            visible: light.hasPlace
            x: light.place.x
            y: light.lowerEdge - height
            radius: light.radius
            isLower: true
        }
        SpotlightCorner {
            visible: light.hasPlace
            x: light.rightEdge - width
            y: light.lowerEdge - height
            radius: light.radius
            isRight: true
            isLower: true
        }
    }
    Rectangle {
        visible: light.hasPlace
        x: light.place.x
        y: light.place.y
        width: light.place.width
        height: light.place.height
        radius: light.radius
        color: "transparent"
        border.width: 2
        border.color: Theme.overPicture
    }
}
