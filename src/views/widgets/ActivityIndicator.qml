pragma ComponentBehavior: Bound

import QtQuick
import Quillmate.Views

// A spinner; invisible when stopped. Its user gives it a size.
Item {
    id: indicator

    property bool running: true

    implicitWidth: 32
    implicitHeight: 32
    visible: running
    Accessible.role: Accessible.Animation
    Accessible.name: "Loading"

    Repeater {
        model: 8

        Rectangle {
            id: hand

            required property int index
            readonly property real side: Math.min(indicator.width, indicator.height)

            x: indicator.width / 2 - hand.width / 2
            y: indicator.height / 2 - hand.side / 2
            width: Math.max(2, side / 12)
            height: side / 3.6
            radius: width / 2
            color: Theme.primary
            // The one at the hand is darkest, those behind it fade.
            opacity: 0.15 + 0.85 * (((hand.index - ticks.step) % 8 + 8) % 8) / 7
            transform: Rotation {
                origin.x: hand.width / 2
                origin.y: hand.side / 2
                angle: hand.index * 45
            }
        }
    }
    Timer {
        id: ticks

        property int step: 0

        interval: 100
        repeat: true
        running: indicator.running && indicator.visible
        onTriggered: step = (step + 1) % 8
    }
}
