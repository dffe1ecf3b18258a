import QtQuick
import Quillmate.Views

// The panel's action button: a symbol and a text in a rounded field as wide as there is room.
PlainButton {
    id: control

    required property string label
    required property string iconName
    required property color backgroundColor
    required property color borderColor

    readonly property bool filled: backgroundColor.a > 0
    readonly property bool outlined: borderColor.a > 0
    readonly property color foreground: filled ? "white" : Theme.primary
    readonly property real fullPadding: outlined ? 27.5 : 8
    readonly property real leastPadding: 8

    text: label
    implicitWidth: implicitContentWidth + 2 * fullPadding
    // In a narrow row the padding gives way before the text breaks.
    horizontalPadding: Math.max(leastPadding, Math.min(fullPadding, (width - implicitContentWidth) / 2))
    verticalPadding: 8
    cornerRadius: 20

    background: Item {
        ContinuousRectangle {
            objectName: "field"
            anchors.centerIn: parent
            width: Math.min(parent.width, control.implicitContentWidth + control.leftPadding + control.rightPadding)
            height: parent.height
            radius: 20
            color: control.filled ? control.backgroundColor : control.hovered ? Theme.hover : "transparent"
        }
        ContinuousRectangle {
            objectName: "outline"
            anchors.fill: parent
            radius: 20
            borderColor: control.borderColor
        }
    }
    contentItem: IconLabel {
        text: control.label
        iconName: control.iconName
        color: control.foreground
    }
}
