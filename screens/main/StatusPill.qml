import QtQuick
import Skyflare.Ui

/// What the app does at the moment, or has just done.
GlassPanel {
    id: pill

    required property LabelOutlet outlet
    property real mostWidth: 300
    property bool isWarning: false // something that the user has to mend

    width: Math.min(mostWidth, label.implicitWidth + 40)
    height: Math.max(32, label.implicitHeight + 14)
    radius: Math.min(16, height / 2)
    visible: !outlet.hidden && outlet.text !== ""

    LabelView {
        id: label
        objectName: "statusText"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, pill.mostWidth - 40)
        outlet: pill.outlet
        horizontalAlignment: Text.AlignHCenter
        color: pill.isWarning ? Theme.warning : Theme.text
        font.weight: Font.Medium
        Accessible.role: Accessible.AlertMessage // what comes is read out
    }
}
