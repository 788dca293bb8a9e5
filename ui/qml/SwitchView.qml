import QtQuick
import Skyflare.Ui

/// What is on or off. Drawn 50 × 30, hit on 56 × 44.
BaseButton {
    id: control

    required property SwitchOutlet outlet
    required property string name // for screen readers
    property string explanation

    implicitWidth: 56
    implicitHeight: Metrics.touchArea
    visible: !outlet.hidden
    Accessible.role: Accessible.CheckBox
    Accessible.name: name
    Accessible.description: explanation
    Accessible.checkable: true
    Accessible.checked: outlet.on
    onClicked: outlet.toggled()

    background: Item {
        Rectangle {
            objectName: "drawn"
            anchors.centerIn: parent
            width: 50
            height: 30
            radius: height / 2
            color: control.outlet.on ? Theme.secondary : "transparent"
            border.width: 2
            border.color: control.outlet.on ? Theme.secondary : Theme.secondaryText
            FocusRing {
                target: control
                radius: height / 2
            }
            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                x: control.outlet.on ? parent.width - width - 4 : 4
                width: control.down ? 26 : 22
                height: 22
                radius: height / 2
                color: control.outlet.on ? Theme.accentColor : Theme.secondaryText
                Behavior on x {
                    NumberAnimation {
                        duration: Metrics.quick
                        easing.type: Easing.OutCubic
                    }
                }
            }
        }
    }
}
