import QtQuick
import Skyflare.Settings
import Skyflare.Ui

/// One setting: a symbol, what it is, and its switch. A row without a switch leads elsewhere, and is a button.
BaseButton {
    id: row

    required property SettingsTableViewCell modelData
    required property int index
    readonly property RowColumn column: parent as RowColumn // null while it goes
    readonly property bool hasSwitch: !modelData.switchControl.hidden

    width: column ? column.width : 0
    implicitHeight: Math.max(64, texts.implicitHeight + 24)
    focusPolicy: hasSwitch ? Qt.NoFocus : Qt.StrongFocus
    Accessible.ignored: hasSwitch || !(column && column.enabled) // covered by something else
    Accessible.name: modelData.titleLabel.text
    Accessible.description: modelData.subtitleLabel.text
    onClicked: column.table.rowTapped(index)

    FocusRing {
        target: row
        anchors.margins: 4
    }
    Rectangle {
        visible: row.index > 0
        x: texts.x
        width: row.width - x
        height: 1
        color: Theme.glassBorder
    }
    SymbolView {
        objectName: "iconImageView"
        anchors.verticalCenter: parent.verticalCenter
        x: Metrics.margin
        width: 26
        height: 26
        name: row.modelData.iconImageView.symbol
        color: Theme.secondary
    }
    Column {
        id: texts
        anchors.verticalCenter: parent.verticalCenter
        x: 56
        width: (row.hasSwitch ? control.x : chevron.x) - x - 12
        spacing: 3

        LabelView {
            objectName: "rowTitle"
            width: parent.width
            outlet: row.modelData.titleLabel
            font.pixelSize: Metrics.labelSize
            font.weight: Font.DemiBold
            Accessible.ignored: true
        }
        LabelView {
            objectName: "rowSubtitle"
            width: parent.width
            visible: text !== ""
            outlet: row.modelData.subtitleLabel
            color: Theme.secondaryText
            Accessible.ignored: true
        }
    }
    SwitchView {
        id: control
        objectName: "switch" + row.index
        anchors.verticalCenter: parent.verticalCenter
        x: row.width - width - Metrics.margin + 3 // its drawing ends at the margin
        outlet: row.modelData.switchControl
        name: row.modelData.titleLabel.text
        explanation: row.modelData.subtitleLabel.text
    }
    SymbolView {
        id: chevron
        anchors.verticalCenter: parent.verticalCenter
        x: row.width - width - Metrics.margin
        visible: !row.hasSwitch
        width: 20
        height: 20
        name: "chevron.right"
        color: Theme.secondaryText
    }
}
