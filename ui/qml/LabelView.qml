import QtQuick
import Skyflare.Ui

/// A text that shows a LabelOutlet.
Text {
    property LabelOutlet outlet: null

    text: outlet ? outlet.text : ""
    visible: !outlet || !outlet.hidden
    opacity: outlet ? outlet.alpha : 1
    color: Theme.text
    font.pixelSize: Metrics.bodySize
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
