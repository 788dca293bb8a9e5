import QtQuick
import Skyflare.Sampler
import Skyflare.Ui

Rectangle {
    required property PlainScreen controller

    color: Theme.ground
}
