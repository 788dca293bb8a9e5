import QtQuick
import Skyflare.Ui

/// Says that what is seen is no camera's picture.
GlassPanel {
    id: mark

    required property LabelOutlet outlet
    property real mostWidth: 200

    width: Math.min(mostWidth, label.implicitWidth + 24)
    height: label.implicitHeight + 14
    radius: Math.min(16, height / 2)
    visible: !outlet.hidden

    LabelView {
        id: label
        objectName: "simulatedCamera"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, mark.mostWidth - 24)
        outlet: mark.outlet
        horizontalAlignment: Text.AlignHCenter
        color: Theme.secondary
        font.pixelSize: Metrics.captionSize
        font.weight: Font.Medium
    }
}
