import QtQuick
import Skyflare.Ui

/// The app's one window.
Window {
    id: window

    required property ScreenStack screens

    width: 390
    height: 844
    minimumWidth: 320
    minimumHeight: 320
    title: "Skyflare"
    color: Theme.ground

    Repeater {
        model: window.screens
        delegate: ScreenFrame {}
    }
    Shortcut {
        sequences: ["Escape", "Back"]
        onActivated: window.screens.escapePressed()
    }
    Shortcut {
        sequences: ["Ctrl+Q"]
        onActivated: Qt.quit()
    }
}
