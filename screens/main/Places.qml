import QtQuick
import Skyflare.Ui

/// Where the parts of the main screen are, in one shape of window. Panels are as wide as their place; what is
/// smaller than its place knows its side.
QtObject {
    required property real width
    required property real height
    required property real selectorHeight // what their texts need

    property real mainSize: 96
    property bool isSideways: false // lists and explanations are beside what they belong to, not above it
    property rect infoBar
    property rect statusText // at its upper edge, in its middle
    property rect readouts
    property rect sensivity
    property rect frequency
    property rect sensivityOptions // at its lower edge
    property rect frequencyOptions
    property rect mainButton
    property rect lastPhoto
    property rect simulatedMark // at its right edge, at half its height
}
