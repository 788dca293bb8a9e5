import QtQuick
import Skyflare.Gallery
import Skyflare.Ui

/// What stands above the grid, or beside it in a wide window: what it is, how many there are, away with them.
FocusScope {
    id: head

    required property PhotoListViewController controller
    property bool isBeside: false
    readonly property bool isNarrow: width < 520 // the count goes below the heading

    implicitHeight: Math.max(64, titles.implicitHeight + 16)

    Grid {
        id: titles
        x: Metrics.margin
        y: head.isBeside ? 24 : (head.height - height) / 2
        columns: head.isNarrow || head.isBeside ? 1 : 2
        columnSpacing: 10
        verticalItemAlignment: Grid.AlignVCenter

        LabelView {
            objectName: "allPhotosLabel"
            width: Math.min(implicitWidth, (head.isBeside ? head.width : deleteAll.visible ? deleteAll.x : head.width - 60) - Metrics.margin - 8)
            outlet: head.controller.allPhotosLabel
            font.pixelSize: head.isNarrow && !head.isBeside ? Metrics.headingSize : 28
            font.bold: true
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 14
            wrapMode: Text.NoWrap
            Accessible.role: Accessible.Heading
        }
        LabelView {
            objectName: "photoCountLabel"
            outlet: head.controller.photoCountLabel
            color: Theme.secondaryText
            font.pixelSize: head.isNarrow && !head.isBeside ? Metrics.labelSize : 20
            font.weight: Font.Medium
        }
    }
    TextButton {
        id: deleteAll
        objectName: "deleteAllButton"
        x: head.isBeside ? 6 : head.width - width - 60
        y: head.isBeside ? titles.y + titles.height + 16 : (head.height - height) / 2
        width: Math.min(implicitWidth, head.isBeside ? head.width - 12 : head.width * 0.36)
        outlet: head.controller.deleteAllButton
        onClicked: head.controller.deleteAllTapped()
    }
}
