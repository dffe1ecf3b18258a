import QtQuick
import Quillmate.Views

// A pill of a fixed size with an optional symbol.
PlainButton {
    id: control

    required property string title
    property string iconName: ""
    required property color backgroundColor

    text: title
    padding: 0
    cornerRadius: height / 2
    ringDistance: 4 // The ring may have the button's own colour, and is seen by the gap.

    background: ContinuousRectangle {
        radius: control.height / 2
        color: control.hovered ? Qt.lighter(control.backgroundColor, 1.08) : control.backgroundColor
    }
    contentItem: IconLabel {
        text: control.title
        iconName: control.iconName
        color: "white"
    }
}
