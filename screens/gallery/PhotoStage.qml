import QtQuick
import Skyflare.Gallery

/// The photo, and what hands do with it: pinch, wheel, double tap; drag it while it is near.
ZoomablePhoto {
    id: stage

    Accessible.ignored: !(parent && parent.enabled) // covered by something else
    Accessible.role: Accessible.Graphic

    PinchHandler {
        id: pinch
        target: null
        onActiveChanged: stage.beginGesture(centroid.position)
        onActiveScaleChanged: stage.gestureTo(activeScale, centroid.position)
    }
    DragHandler {
        id: drag
        target: null
        enabled: stage.isZoomed
        onActiveChanged: stage.beginGesture(Qt.point(0, 0))
        onActiveTranslationChanged: stage.gestureTo(1, Qt.point(activeTranslation.x, activeTranslation.y))
    }
    WheelHandler {
        target: null
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: event => stage.wheel(event.angleDelta.y, Qt.point(event.x, event.y))
    }
    TapHandler {
        onDoubleTapped: point => stage.toggle(point.position)
    }
}
