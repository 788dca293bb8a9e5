pragma Singleton
import QtQuick

/// Sizes, distances and durations that all screens share; logical pixels and milliseconds.
QtObject {
    readonly property int captionSize: 12
    readonly property int bodySize: 14
    readonly property int labelSize: 16
    readonly property int titleSize: 18
    readonly property int headingSize: 22
    readonly property int readoutSize: 30

    readonly property int touchArea: 44 // the least that a finger hits
    readonly property int margin: 16 // to the edge of the window
    readonly property int gap: 12 // between panels
    readonly property int panelRadius: 18
    readonly property int panelPadding: 14

    readonly property int quick: 120
    readonly property int usual: 220
    readonly property int breath: 1000
}
