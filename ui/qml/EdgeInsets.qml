import QtQuick

/// How much is kept free at each edge.
QtObject {
    property real top: 0
    property real left: 0
    property real bottom: 0
    property real right: 0
}
