import QtQuick
import Quillmate.Views

// A button of the Mail host's own windows: a word in a quiet frame, or filled when it is the main thing to do.
PlainButton {
    id: control

    property bool prominent: false

    horizontalPadding: 12
    verticalPadding: 6
    cornerRadius: 6

    background: Rectangle {
        radius: control.cornerRadius
        color: control.prominent ? Theme.accent : control.hovered ? Theme.hover : Theme.raised
        border.width: control.prominent ? 0 : 1
        border.color: Theme.separator
    }
    contentItem: Text {
        text: control.text
        color: control.prominent ? "white" : Theme.primary
        font.pixelSize: Theme.body
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
