import QtQuick
import Skyflare.Ui

/// Goes around the control that has the focus, while the keyboard is used.
Rectangle {
    required property Item target

    anchors.fill: parent
    anchors.margins: -4
    visible: target.activeFocus && InputMode.isKeyboard
    radius: 14
    color: "transparent"
    border.width: 2
    border.color: Theme.secondary
}
