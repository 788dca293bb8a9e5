import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// What can be done with the photo: beside each other, or one above the other at the side of a low window.
FocusScope {
    id: actions

    required property PhotoDetailViewController controller
    property bool isColumn: false

    implicitWidth: isColumn ? 220 : 420
    implicitHeight: isColumn ? 124 : 68

    GlassPanel {
        anchors.fill: parent
    }
    ActionButton {
        id: save
        objectName: "saveButton"
        x: 12
        y: 12
        width: actions.width - (actions.isColumn ? 24 : 80)
        outlet: actions.controller.saveButton
        focus: true
        onClicked: actions.controller.saveButtonTapped()
    }
    IconButton {
        id: remove
        objectName: "deleteButton"
        x: actions.isColumn ? (actions.width - width) / 2 : actions.width - width - 12
        y: actions.height - height - 12
        outlet: actions.controller.deleteButton
        drawnSize: 40
        symbolSize: 24
        tint: Theme.warning
        onClicked: actions.controller.deleteButtonTapped()
    }
    Binding {
        // The other has done what it is there for. A popup switches it off too, and that is no reason.
        target: remove
        property: "focus"
        value: true
        when: !actions.controller.saveButton.enabled
        restoreMode: Binding.RestoreNone
    }
}
