import QtQuick
import Skyflare.Ui

/// A phone on its side: the button at the right, under the thumb, and all else along the edges.
Places {
    id: places

    readonly property real margin: Metrics.margin
    readonly property real columnWidth: 112
    readonly property real column: width - margin - columnWidth
    readonly property real selectorWidth: width < 760 ? 176 : 196
    readonly property real selectorLeft: column - Metrics.gap - selectorWidth
    readonly property real stackHeight: 2 * selectorHeight + 8
    readonly property real barWidth: Math.min(300, width * 0.36)
    readonly property real listLeft: selectorLeft - 8 - selectorWidth

    isSideways: true
    infoBar: Qt.rect(margin, margin, barWidth, 52)
    statusText: Qt.rect(margin + barWidth + Metrics.gap, margin + 10, column - margin - barWidth - 2 * Metrics.gap, 32)
    readouts: Qt.rect(margin, height - margin - stackHeight, Math.min(480, selectorLeft - Metrics.gap - margin), stackHeight)
    sensivity: Qt.rect(selectorLeft, height - margin - stackHeight, selectorWidth, selectorHeight)
    frequency: Qt.rect(selectorLeft, height - margin - selectorHeight, selectorWidth, selectorHeight)
    sensivityOptions: Qt.rect(listLeft, 8, selectorWidth, height - 16)
    frequencyOptions: Qt.rect(listLeft, 8, selectorWidth, height - 16)
    mainButton: Qt.rect(column + (columnWidth - mainSize) / 2, (height - mainSize) / 2, mainSize, mainSize)
    lastPhoto: Qt.rect(column + (columnWidth - 72) / 2, height - margin - 72, 72, 72)
    simulatedMark: Qt.rect(column, margin, columnWidth, 52)
}
