import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// One photo, as large as the window lets it be beside its controls; near, it lies behind them.
FocusScope {
    id: screen

    required property PhotoDetailViewController controller
    readonly property bool isSideways: controller.isLandscape
    readonly property rect room: isSideways ? Qt.rect(0, 0, actions.x - Metrics.gap, height) : Qt.rect(0, 60, width, actions.y - Metrics.gap - 60)

    focus: true

    Keys.onLeftPressed: photo.panByRooms(0.25, 0)
    Keys.onRightPressed: photo.panByRooms(-0.25, 0)
    Keys.onUpPressed: photo.panByRooms(0, 0.25)
    Keys.onDownPressed: photo.panByRooms(0, -0.25)
    Shortcut {
        sequences: ["+", "=", "Ctrl++", "Ctrl+="]
        enabled: screen.enabled
        onActivated: photo.zoomBy(1.5)
    }
    Shortcut {
        sequences: ["-", "Ctrl+-"]
        enabled: screen.enabled
        onActivated: photo.zoomBy(1 / 1.5)
    }
    Shortcut {
        sequences: ["0", "Ctrl+0"]
        enabled: screen.enabled
        onActivated: photo.fit()
    }
    Shortcut {
        sequences: ["Delete"]
        enabled: screen.enabled
        onActivated: screen.controller.deleteButtonTapped()
    }
    Shortcut {
        sequences: ["Ctrl+S"]
        enabled: screen.enabled && screen.controller.saveButton.enabled
        onActivated: screen.controller.saveButtonTapped()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.ground
    }
    Item {
        objectName: "containerView"
        anchors.fill: parent
        visible: !screen.controller.containerView.hidden

        PhotoStage {
            id: photo
            objectName: "imageContainer"
            anchors.fill: parent
            outlet: screen.controller.imageContainer
            room: screen.room
            Accessible.name: screen.controller.photoName
            onIsDamagedChanged: screen.controller.photoNotShown()
        }
        DamagedNote {
            x: screen.room.x + (screen.room.width - width) / 2
            y: screen.room.y + (screen.room.height - height) / 2
            visible: photo.isDamaged
            mostWidth: screen.room.width - 2 * Metrics.margin
            outlet: screen.controller.damagedLabel
        }
    }
    DetailActions {
        id: actions
        x: screen.isSideways ? screen.width - width - Metrics.margin : (screen.width - width) / 2
        y: screen.height - height - Metrics.margin
        width: Math.min(implicitWidth, screen.width - 2 * Metrics.margin)
        height: implicitHeight
        isColumn: screen.isSideways
        controller: screen.controller
        focus: true
    }
    IconButton {
        objectName: "closeButton"
        x: screen.width - width - 8
        y: 8
        outlet: screen.controller.closeButton
        ground: Theme.glass
        drawnSize: 40
        onClicked: screen.controller.dismissButtonTapped()
    }
}
