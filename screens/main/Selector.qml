import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// One setting: its name, its value, and whether the list of the others is open.
BaseButton {
    id: control

    required property LabelOutlet title
    required property LabelOutlet value
    property bool isOpen: false
    property bool isSideways: false // the list opens at the side

    implicitHeight: Math.max(Metrics.touchArea, contentItem.implicitHeight)
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.ButtonDropDown
    Accessible.name: title.text + ": " + value.text

    background: GlassPanel {
        border.color: control.isOpen ? Theme.secondary : Theme.glassBorder
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: Theme.pressed
            visible: control.down
        }
        FocusRing {
            target: control
            radius: Metrics.panelRadius + 4
            border.color: Theme.overPicture
        }
    }
    contentItem: SelectorFace {
        title: control.title
        value: control.value
        symbol: control.isSideways ? "chevron.left" : control.isOpen ? "chevron.down" : "chevron.up"
    }
}
