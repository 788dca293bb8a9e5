import QtQuick
import Skyflare.Ui

/// Draws a CustomPopupView over the screen that it is shown on. Only its two controls take it away.
FocusScope {
    id: root

    required property CustomPopupView popup
    required property bool isTop

    enabled: isTop
    focus: isTop
    x: popup.frame.x
    y: popup.frame.y
    width: popup.frame.width
    height: popup.frame.height
    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.Dialog
    Accessible.name: popup.titleLabel.text
    Accessible.description: popup.descriptionLabel.text

    Rectangle {
        id: dimming
        objectName: "dimming"
        anchors.fill: parent
        color: "black"
        opacity: 0.5
        NumberAnimation {
            running: true
            target: dimming
            property: "opacity"
            from: 0
            to: 0.5
            duration: Metrics.quick
        }
        MouseArea {
            // Nothing below is touched, and nothing happens.
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
            hoverEnabled: true
            onWheel: wheel => wheel.accepted = true
        }
    }
    Rectangle {
        id: card
        objectName: "card"
        readonly property real roomForText: root.height - 2 * Metrics.margin - 80
        anchors.centerIn: parent
        width: root.popup.cardWidth
        height: Math.min(texts.contentHeight, roomForText) + 80
        radius: 20
        color: Theme.accentColor
        border.width: 2
        Binding {
            when: Theme.hasSecondary
            target: card.border
            property: "color"
            value: Theme.secondary
        }
        NumberAnimation on scale {
            from: 0.94
            to: 1
            duration: Metrics.usual
            easing.type: Easing.OutCubic
        }

        Flickable {
            id: texts
            anchors.fill: parent
            anchors.bottomMargin: 80
            contentHeight: description.y + description.height
            interactive: contentHeight > height
            clip: interactive
            boundsBehavior: Flickable.StopAtBounds

            SymbolView {
                id: icon
                objectName: "icon"
                anchors.horizontalCenter: parent.horizontalCenter
                y: 20
                width: 50
                height: 50
                visible: root.popup.icon !== null
                name: root.popup.icon ? root.popup.icon.symbol : ""
                color: Theme.secondary
            }
            LabelView {
                id: title
                objectName: "title"
                outlet: root.popup.titleLabel
                x: 20
                y: icon.visible ? icon.y + icon.height + 20 : 20
                width: card.width - 40
                horizontalAlignment: Text.AlignHCenter
                color: Theme.secondary
                font.pixelSize: 18
                font.bold: true
            }
            LabelView {
                id: description
                objectName: "description"
                outlet: root.popup.descriptionLabel
                x: 20
                y: title.y + title.height + 10
                width: card.width - 40
                horizontalAlignment: Text.AlignHCenter
                color: Theme.secondary
                font.pixelSize: 14
            }
        }
        ActionButton {
            objectName: "action"
            outlet: root.popup.button
            x: 20
            y: card.height - 62 // drawn 40 high, 20 above the lower edge
            width: card.width - 40
            focus: true
            onClicked: root.popup.buttonTapped()
            Keys.onUpPressed: texts.contentY = Math.max(0, texts.contentY - 40)
            Keys.onDownPressed: texts.contentY = Math.max(0, Math.min(texts.contentHeight - texts.height, texts.contentY + 40))
        }
        IconButton {
            id: closeControl
            objectName: "close"
            outlet: root.popup.dismissButton
            symbol: "close"
            x: card.width - 47 // drawn 30 × 30, 10 from the corner's edges
            y: 3
            onClicked: root.popup.dismissPopupWithVibrate(closeControl)
        }
    }
}
