import QtQuick
import Skyflare.Ui

/// What stands on a selector.
Item {
    id: face

    required property LabelOutlet title
    required property LabelOutlet value
    required property string symbol

    implicitHeight: texts.implicitHeight + 20

    Column {
        id: texts
        anchors.verticalCenter: parent.verticalCenter
        x: Metrics.panelPadding
        width: sign.x - x - 4
        spacing: 2

        LabelView {
            width: parent.width
            outlet: face.title
            color: Theme.secondaryText
            font.pixelSize: Metrics.captionSize
            Accessible.ignored: true
        }
        LabelView {
            width: parent.width
            outlet: face.value
            font.pixelSize: Metrics.labelSize
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
    }
    SymbolView {
        id: sign
        anchors.verticalCenter: parent.verticalCenter
        x: parent.width - width - 10
        width: 18
        height: 18
        name: face.symbol
        color: Theme.secondary
    }
}
