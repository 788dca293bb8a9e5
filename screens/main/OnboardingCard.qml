import QtQuick
import Skyflare.Main
import Skyflare.Ui

/// One step: all but its subject is dimmed, and the card stands above or beside that, or in the middle.
Item {
    id: card

    required property int index
    required property OnboardingView view
    required property Item control // that goes on
    property rect subject
    property bool isBeside: false
    readonly property OnboardingStep step: view.steps[index]
    readonly property bool hasSubject: subject.width > 0
    readonly property rect place: hasSubject ? Qt.rect(subject.x - 6, subject.y - 6, subject.width + 12, subject.height + 12) : subject
    readonly property real margin: Metrics.margin
    readonly property real room: hasSubject && isBeside ? place.x - 2 * margin : width - 2 * margin

    anchors.fill: parent
    visible: !step.hidden

    Spotlight {
        anchors.fill: parent
        place: card.place
        isRound: card.place.width === card.place.height
    }
    Rectangle {
        readonly property real besideX: card.place.x - width - card.margin
        readonly property real aboveX: Math.max(card.margin, Math.min(card.width - width - card.margin, card.place.x + (card.place.width - width) / 2))

        width: Math.min(card.room, 360)
        height: texts.height + 40
        x: !card.hasSubject ? (card.width - width) / 2 : card.isBeside ? besideX : aboveX
        y: card.hasSubject && !card.isBeside ? Math.max(0, card.place.y - height - card.margin) : (card.height - height) / 2
        radius: 20
        color: Theme.accentColor
        border.width: 2
        border.color: Theme.secondary

        Column {
            id: texts
            x: 20
            y: 20
            width: parent.width - 40
            spacing: 10

            LabelView {
                width: parent.width
                outlet: card.step.text1
                color: Theme.secondary
                font.pixelSize: Metrics.headingSize
                font.bold: true
                Accessible.role: Accessible.Heading
            }
            LabelView {
                width: parent.width
                outlet: card.step.text2
                font.pixelSize: card.isBeside ? Metrics.bodySize : Metrics.labelSize
                lineHeight: 1.25
            }
            OnboardingFoot {
                width: parent.width
                index: card.index
                count: card.view.steps.length
                nextButton: card.view.nextButton
                control: card.control
            }
        }
    }
}
