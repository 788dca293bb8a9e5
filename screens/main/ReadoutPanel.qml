import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// How bright it is now, how bright it was, how much brighter it has to become, and how much it last did.
GlassPanel {
    id: panel

    required property MainViewController controller
    readonly property int flashes: controller.captureFlashes

    onFlashesChanged: flash.restart()

    MouseArea {
        anchors.fill: parent // a tap here is no tap on the sky
    }
    Readout {
        id: now
        objectName: "lightPower"
        x: Metrics.panelPadding
        width: Math.max(implicitWidth, 72) // of "0.00": the curve stays where it is
        anchors.verticalCenter: parent.verticalCenter
        caption: panel.controller.lightPowerTitle.text
        outlet: panel.controller.lightPowerLabel
    }
    LightCurveView {
        objectName: "lightCurve"
        anchors.left: now.right
        anchors.leftMargin: Metrics.margin
        anchors.right: last.left
        anchors.rightMargin: Metrics.gap
        anchors.verticalCenter: parent.verticalCenter
        height: panel.height - 2 * Metrics.panelPadding - 4
        curve: panel.controller.lightCurve
        color: Theme.secondary
        riseColor: Theme.text
    }
    Item {
        id: last
        anchors.right: parent.right
        anchors.rightMargin: Metrics.panelPadding
        width: Math.max(62, difference.implicitWidth)
        height: parent.height

        Readout {
            id: difference
            objectName: "lastDifference"
            anchors.right: parent.right
            y: now.y
            caption: panel.controller.lastDifferenceTitle.text
            outlet: panel.controller.lastDifferenceLabel
            size: 22
            isRightAligned: true
        }
        SymbolView {
            id: bolt
            objectName: "actionImage"
            anchors.right: parent.right
            y: difference.y + difference.height + 1
            width: 22
            height: 22
            name: "bolt.fill"
            color: Theme.secondary
            opacity: panel.controller.actionImage.alpha
            NumberAnimation {
                id: flash
                target: bolt
                property: "opacity"
                from: 1
                to: 0
                duration: 1000
            }
        }
    }
}
