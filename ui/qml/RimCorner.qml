import QtQuick

/// One corner of a BreathingBorder: a quarter of a ring.
Item {
    id: corner

    required property real radius
    required property real lineWidth
    required property color color
    property bool isRight: false
    property bool isLower: false

    x: isRight ? parent.width - width : 0
    y: isLower ? parent.height - height : 0
    width: radius
    height: radius
    clip: true

    Rectangle {
        x: corner.isRight ? -width / 2 : 0
        y: corner.isLower ? -height / 2 : 0
        width: 2 * corner.radius
        height: width
        radius: width / 2
        color: "transparent"
        border.width: corner.lineWidth
        border.color: corner.color
    }
}
