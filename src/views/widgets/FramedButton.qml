import QtQuick
import Quillmate.Views

// A word in a quiet frame, or filled when it is the main thing to do.
PlainButton {
    id: control

    property bool prominent: false

    horizontalPadding: 12
    verticalPadding: 6
    font.pixelSize: Theme.body

    background: ContinuousRectangle {
        radius: control.cornerRadius
        color: control.prominent ? Theme.accent : control.hovered ? Theme.hover : Theme.raised
        borderColor: control.prominent ? "transparent" : Theme.separator
    }
    contentItem: Text {
        text: control.text
        color: control.prominent ? "white" : Theme.primary
        font: control.font
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
