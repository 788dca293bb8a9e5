import QtQuick
import Skyflare.Ui

/// A phone held upright, and every window that is as narrow: one above the other, the button lowest.
Places {
    id: places

    readonly property real breadth: Math.min(width - 2 * Metrics.margin, 480)
    readonly property real left: (width - breadth) / 2
    readonly property real half: (breadth - Metrics.gap) / 2
    readonly property real foot: height < 700 ? Metrics.margin : 32
    readonly property real selectorTop: mainButton.y - Metrics.margin - selectorHeight

    mainSize: height < 700 ? 92 : 104
    infoBar: Qt.rect(left, Metrics.margin, breadth, 52)
    statusText: Qt.rect(left, Metrics.margin + 52 + Metrics.gap, breadth, 32)
    readouts: Qt.rect(left, selectorTop - Metrics.gap - 96, breadth, 96)
    sensivity: Qt.rect(left, selectorTop, half, selectorHeight)
    frequency: Qt.rect(left + breadth - half, selectorTop, half, selectorHeight)
    sensivityOptions: Qt.rect(sensivity.x, Metrics.margin, half, selectorTop - 8 - Metrics.margin)
    frequencyOptions: Qt.rect(frequency.x, Metrics.margin, half, selectorTop - 8 - Metrics.margin)
    mainButton: Qt.rect((width - mainSize) / 2, height - foot - mainSize, mainSize, mainSize)
    lastPhoto: Qt.rect(left + 4, mainButton.y + (mainSize - 72) / 2, 72, 72)
    simulatedMark: Qt.rect(mainButton.x + mainSize + Metrics.gap, mainButton.y, breadth + left - mainButton.x - mainSize - Metrics.gap, mainSize)
}
