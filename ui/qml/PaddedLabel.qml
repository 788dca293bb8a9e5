import QtQuick
import Skyflare.Ui

/// A label with room around its text, which counts as a part of its size.
LabelView {
    property EdgeInsets textInsets: EdgeInsets {
        top: 2
        left: 5
        bottom: 2
        right: 5
    }

    topPadding: textInsets.top
    leftPadding: textInsets.left
    bottomPadding: textInsets.bottom
    rightPadding: textInsets.right
}
