import QtQuick
import Skyflare.Ui

/// A button that is a symbol alone; its name is for screen readers. Hit on 44, however small it is drawn.
OutletButton {
    id: control

    property string symbol: outlet.symbol
    property real drawnSize: 30
    property real symbolSize: 22
    property color ground: "transparent"
    property color tint: Theme.secondary

    implicitWidth: Math.max(Metrics.touchArea, drawnSize)
    implicitHeight: Math.max(Metrics.touchArea, drawnSize)

    background: Item {
        Rectangle {
            objectName: "drawn"
            anchors.centerIn: parent
            width: control.drawnSize
            height: control.drawnSize
            radius: width / 2
            color: control.down ? Theme.pressed : control.ground
            FocusRing {
                anchors.margins: -1
                radius: width / 2
                target: control
            }
        }
    }
    contentItem: Item {
        SymbolView {
            anchors.centerIn: parent
            width: control.symbolSize
            height: control.symbolSize
            name: control.symbol
            color: control.tint
        }
    }
}
