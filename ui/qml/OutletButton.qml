import QtQuick
import Skyflare.Ui

/// A button that shows a ButtonOutlet, whatever it looks like.
BaseButton {
    required property ButtonOutlet outlet

    text: outlet.text
    visible: !outlet.hidden
    enabled: outlet.enabled
    opacity: outlet.alpha
    Accessible.name: outlet.accessibleName
}
