import QtQuick
import Skyflare.Ui

/// The ground of what floats over the preview.
Rectangle {
    radius: Metrics.panelRadius
    color: Theme.glass
    border.width: 1
    border.color: Theme.glassBorder
}
