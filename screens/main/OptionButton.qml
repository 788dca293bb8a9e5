import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// One value to choose, in its column.
BaseButton {
    id: control

    required property ButtonOutlet modelData
    required property int index
    readonly property OptionColumn column: parent as OptionColumn // null while it goes
    readonly property bool isChosen: column !== null && modelData.text === column.chosen.text

    width: column ? column.width : 0
    implicitHeight: Math.max(Metrics.touchArea, contentItem.implicitHeight)
    text: modelData.text
    focus: isChosen
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.RadioButton
    Accessible.name: modelData.accessibleName
    Accessible.checkable: true
    Accessible.checked: isChosen
    onActiveFocusChanged: column.focusedIndex = activeFocus ? index : column.focusedIndex
    onClicked: column.picked(modelData)

    background: Rectangle {
        radius: 12
        color: control.down || control.isChosen ? Theme.pressed : "transparent"
        FocusRing {
            target: control
            radius: 12
            anchors.margins: 0
        }
    }
    contentItem: OptionFace {
        text: control.text
        isChosen: control.isChosen
    }
}
