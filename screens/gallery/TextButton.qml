import QtQuick
import QtQuick.Templates as T
import Skyflare.Ui

/// A button that is a text alone, for what is rarely wanted and not undone.
T.AbstractButton {
    id: control

    required property ButtonOutlet outlet

    implicitWidth: contentItem.implicitWidth + 20
    implicitHeight: Metrics.touchArea
    text: outlet.text
    visible: !outlet.hidden
    enabled: outlet.enabled
    opacity: outlet.alpha
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: outlet.accessibleName
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Item {
        Rectangle {
            anchors.fill: parent
            anchors.topMargin: 4
            anchors.bottomMargin: 4
            radius: 10
            color: control.down ? Theme.pressed : "transparent"
            FocusRing {
                anchors.margins: 0
                radius: 10
                target: control
            }
        }
    }
    contentItem: Text {
        text: control.text
        color: Theme.warning
        font.pixelSize: Metrics.labelSize
        font.weight: Font.DemiBold
        fontSizeMode: Text.HorizontalFit // a longer language stays on its one line
        minimumPixelSize: 11
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
