import QtQuick
import Skyflare.Settings
import Skyflare.Ui

/// The settings in one column: the rows, and the message at the foot. Scrolls where the window is low.
FocusScope {
    id: screen

    required property SettingsViewController controller
    readonly property real breadth: Math.min(width - 2 * Metrics.margin, 560)
    readonly property real edge: (width - breadth) / 2

    focus: true

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }
    LabelView {
        objectName: "titleLabel"
        anchors.verticalCenter: close.verticalCenter
        x: screen.edge + 4
        width: close.x - x - 8
        outlet: screen.controller.titleLabel
        font.pixelSize: Metrics.headingSize
        font.bold: true
        Accessible.role: Accessible.Heading
    }
    IconButton {
        id: close
        objectName: "closeButton"
        x: screen.edge + screen.breadth - width
        y: 8
        outlet: screen.controller.closeButton
        focus: true
        onClicked: screen.controller.dismissButtonTapped()
    }
    Flickable {
        id: page

        readonly property Item focused: Window.activeFocusItem
        readonly property real focusTop: focused ? focused.mapToItem(contentItem, 0, 0).y - 8 : 0
        readonly property real focusEnd: focused ? focusTop + focused.height + 16 : 0

        y: close.y + close.height + 8
        width: screen.width
        height: screen.height - y
        contentHeight: Math.max(height, rows.height + bottom.height + 2 * Metrics.margin + Metrics.gap)
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds
        // Tab leads to what is to be seen.
        onFocusEndChanged: contentY = Math.max(0, Math.min(contentHeight - height, Math.max(focusEnd - height, Math.min(contentY, focusTop))))

        Rectangle {
            x: screen.edge
            width: screen.breadth
            height: rows.height
            radius: Metrics.panelRadius
            color: Theme.accentColor
            border.width: 1
            border.color: Theme.glassBorder

            RowColumn {
                id: rows
                width: parent.width
                table: screen.controller.tableView

                Repeater {
                    model: screen.controller.tableView.cells
                    delegate: SettingsRow {}
                }
            }
        }
        BottomArea {
            id: bottom
            x: screen.edge
            y: page.contentHeight - height - Metrics.margin
            width: screen.breadth
            controller: screen.controller
        }
    }
}
