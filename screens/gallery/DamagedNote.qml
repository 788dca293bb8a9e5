import QtQuick
import Skyflare.Ui

/// Stands where a photo cannot be shown.
GlassPanel {
    id: note

    required property LabelOutlet outlet
    property real mostWidth: 320

    width: Math.min(mostWidth, 320)
    height: label.y + label.height + 24

    SymbolView {
        id: sign
        anchors.horizontalCenter: parent.horizontalCenter
        y: 24
        width: 40
        height: 40
        name: "photo"
        color: Theme.secondaryText
    }
    LabelView {
        id: label
        objectName: "damagedLabel"
        x: 20
        y: sign.y + sign.height + 12
        width: note.width - 40
        outlet: note.outlet
        horizontalAlignment: Text.AlignHCenter
        font.pixelSize: Metrics.labelSize
    }
}
