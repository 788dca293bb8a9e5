import QtQuick
import Skyflare.Ui

/// What is dimmed between a corner of a Spotlight's place and the round that is cut out of it.
Item {
    id: corner

    required property real radius
    property bool isRight: false
    property bool isLower: false

    width: radius
    height: radius
    clip: true

    RimCorner {
        radius: corner.radius + lineWidth
        lineWidth: corner.radius // more than the square's corner is away from the circle
        color: "black"
        isRight: corner.isRight
        isLower: corner.isLower
        x: corner.isRight ? 0 : -lineWidth
        y: corner.isLower ? 0 : -lineWidth
    }
}
