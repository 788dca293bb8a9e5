import QtQuick
import Skyflare.Ui

/// The filled button for what a card or a screen is there for. Drawn 40 high, hit on 44.
OutletButton {
    id: control

    implicitWidth: Math.max(120, contentItem.implicitWidth + 40)
    implicitHeight: Metrics.touchArea

    background: Item {
        Rectangle {
            objectName: "drawn"
            width: parent.width
            height: 40
            y: (parent.height - height) / 2
            radius: 10
            color: Theme.secondary
            scale: control.down ? 0.98 : 1
            opacity: control.down ? 0.85 : 1
            FocusRing {
                target: control
            }
        }
    }
    contentItem: ButtonFace {
        text: control.text
        symbol: control.outlet.symbol
    }
}
