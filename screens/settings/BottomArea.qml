import QtQuick
import Skyflare.Settings
import Skyflare.Ui

/// A message, and where to read more.
Column {
    id: area

    required property SettingsViewController controller

    spacing: 10

    LabelView {
        objectName: "bottomMessage"
        width: parent.width
        outlet: area.controller.bottomMessage
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
    }
    ActionButton {
        objectName: "bottomButton"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, implicitWidth)
        outlet: area.controller.bottomButton
        onClicked: area.controller.bottomButtonTapped()
    }
}
