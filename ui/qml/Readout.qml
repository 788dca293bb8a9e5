import QtQuick
import Skyflare.Ui

/// A number with its caption. Its digits keep their places while it changes.
Column {
    id: readout

    property string caption
    required property LabelOutlet outlet
    property int size: Metrics.readoutSize
    property bool isRightAligned: false

    spacing: 2
    visible: !outlet.hidden
    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.StaticText
    Accessible.name: caption + " " + outlet.text

    Text {
        anchors.right: readout.isRightAligned ? parent.right : undefined
        text: readout.caption
        color: Theme.secondaryText
        font.pixelSize: Metrics.captionSize
        textFormat: Text.PlainText
    }
    DigitsView {
        objectName: "digits"
        anchors.right: readout.isRightAligned ? parent.right : undefined
        text: readout.outlet.text === "" ? "–" : readout.outlet.text // keeps its place
        color: Theme.text
        pixelSize: readout.size
        weight: Font.DemiBold
        opacity: readout.outlet.alpha
    }
}
