import QtQuick
import Skyflare.Ui

/// A desktop or a large tablet: one row along the lower edge, the button in its middle.
Places {
    id: places

    readonly property real margin: 24
    readonly property real group: Math.min(444, width / 2 - mainSize / 2 - 2 * margin)
    readonly property real left: (width - mainSize) / 2 - margin - group
    readonly property real right: (width + mainSize) / 2 + margin
    readonly property real half: (group - Metrics.gap) / 2
    readonly property real middle: height - 32 - mainSize / 2

    mainSize: 116
    infoBar: Qt.rect(margin, margin, 340, 56)
    statusText: Qt.rect(width / 2 - 260, margin + 12, 520, 32)
    readouts: Qt.rect(left + 72 + Metrics.margin, middle - 48, group - 72 - Metrics.margin, 96)
    sensivity: Qt.rect(right, middle - selectorHeight / 2, half, selectorHeight)
    frequency: Qt.rect(right + group - half, middle - selectorHeight / 2, half, selectorHeight)
    sensivityOptions: Qt.rect(sensivity.x, margin, half, sensivity.y - 8 - margin)
    frequencyOptions: Qt.rect(frequency.x, margin, half, frequency.y - 8 - margin)
    mainButton: Qt.rect((width - mainSize) / 2, middle - mainSize / 2, mainSize, mainSize)
    lastPhoto: Qt.rect(left, middle - 36, 72, 72)
    simulatedMark: Qt.rect(width - margin - 220, margin, 220, 56)
}
