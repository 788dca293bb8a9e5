import QtQuick
import Skyflare.Ui

/// The ground while no picture is live: the sky that one waits under. Never repainted.
Rectangle {
    gradient: Gradient {
        GradientStop {
            position: 0
            color: Theme.sky
        }
        GradientStop {
            position: 0.55
            color: Theme.sky
        }
        GradientStop {
            position: 1
            color: Theme.skyLow
        }
    }

    Repeater {
        model: 110
        delegate: Rectangle {
            required property int index
            // Multiples of irrational numbers are spread evenly and look like chance.
            x: parent ? parent.width * (index * 0.754877666 % 1) : 0
            y: parent ? parent.height * 0.8 * (index * 0.569840291 % 1) : 0
            width: index % 7 === 0 ? 2 : 1
            height: width
            radius: width / 2
            color: Theme.overPicture
            opacity: 0.25 + 0.55 * (index * 0.414213562 % 1)
        }
    }
}
