import QtQuick
import Skyflare.Ui

/// What the options of one list have in common.
Column {
    required property LabelOutlet chosen // whose text is the chosen one's
    property int focusedIndex: -1

    signal picked(ButtonOutlet option)
}
