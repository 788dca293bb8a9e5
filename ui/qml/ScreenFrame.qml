import QtQuick
import Skyflare.Ui

/// One screen of the window with its popups: comes, stays, is covered, goes.
FocusScope {
    id: frame

    required property ViewController controller
    required property bool isTop
    required property bool isLeaving
    required property bool isCovered
    required property bool isAnimated
    property bool isLoaded: false

    anchors.fill: parent
    focus: isTop
    enabled: isTop
    visible: !isCovered
    state: isLoaded && !isLeaving ? "in" : ""
    Component.onCompleted: isLoaded = true

    Item {
        id: moving
        width: parent.width
        height: parent.height
        y: Metrics.margin
        opacity: 0

        ScreenView {
            anchors.fill: parent
            controller: frame.controller
            enabled: frame.controller.popups.count === 0
            focus: enabled
        }
        Repeater {
            model: frame.controller.popups
            delegate: PopupCard {}
        }
    }
    states: State {
        name: "in"
        PropertyChanges {
            moving.y: 0
            moving.opacity: 1
        }
    }
    transitions: [
        Transition {
            to: "in"
            SequentialAnimation {
                NumberAnimation {
                    properties: "y,opacity"
                    duration: frame.isAnimated ? Metrics.usual : 0
                    easing.type: Easing.OutCubic
                }
                ScriptAction {
                    script: frame.controller.viewDidAppear()
                }
            }
        },
        Transition {
            to: ""
            SequentialAnimation {
                NumberAnimation {
                    properties: "y,opacity"
                    duration: frame.isAnimated ? Metrics.usual : 0
                    easing.type: Easing.InCubic
                }
                ScriptAction {
                    script: frame.controller.viewDidDisappear()
                }
            }
        }
    ]
}
