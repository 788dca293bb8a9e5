import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// The values of one setting, from top to bottom, one of them chosen. Scrolls where the window is low.
FocusScope {
    id: list

    required property SelectionContainer container
    required property LabelOutlet title
    required property LabelOutlet chosen
    property rect place // stands at its foot

    signal picked(ButtonOutlet option)

    visible: !container.hidden
    x: place.x
    y: place.y + place.height - height
    width: place.width
    height: Math.min(place.height, options.implicitHeight + 12)
    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.List
    Accessible.name: title.text
    Keys.onUpPressed: rows.itemAt(Math.max(0, options.focusedIndex - 1)).focus = true
    Keys.onDownPressed: rows.itemAt(Math.min(rows.count - 1, options.focusedIndex + 1)).focus = true

    Rectangle {
        // What is below is not to be read through it.
        anchors.fill: parent
        radius: Metrics.panelRadius
        color: Theme.accentColor
        border.width: 1
        border.color: Theme.glassBorder
        MouseArea {
            anchors.fill: parent
        }
    }
    Flickable {
        id: view

        readonly property Item focused: rows.itemAt(options.focusedIndex)

        anchors.fill: parent
        anchors.margins: 6
        contentHeight: options.implicitHeight
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds
        onFocusedChanged: contentY = focused ? Math.max(Math.min(contentY, focused.y), focused.y + focused.height - height) : 0

        OptionColumn {
            id: options
            width: view.width
            chosen: list.chosen
            onPicked: option => list.picked(option)

            Repeater {
                id: rows
                model: list.container.options
                delegate: OptionButton {}
            }
        }
    }
}
