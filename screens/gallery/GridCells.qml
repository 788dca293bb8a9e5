import QtQuick
import Skyflare.Gallery

/// What the cells of one grid have in common.
Item {
    required property CollectionView collection

    signal keysCame(rect frame) // to the cell there

    height: collection.contentHeight
}
