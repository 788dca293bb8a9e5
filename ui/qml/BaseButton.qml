import QtQuick
import QtQuick.Templates as T

/// What is tapped: Enter and a screen reader do what a tap does. Space does already.
T.AbstractButton {
    id: control

    /// Emitted by their names when a screen reader presses or toggles. Handlers of Accessible's own signals would list
    /// an action that the role has already a second time.
    signal accessiblePressAction
    signal accessibleToggleAction

    focusPolicy: Qt.StrongFocus
    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.Button
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()
    onAccessiblePressAction: control.clicked()
    onAccessibleToggleAction: control.clicked()
}
