import QtQuick
import Quillmate.Views

// A symbol and a text side by side, in the middle of the item; the text takes more lines where there is no room for one.
// An empty name leaves the symbol out.
Item {
    id: label

    required property string text
    required property string iconName
    required property color color
    property int fontWeight: Font.Normal

    readonly property real symbolRoom: iconName === "" ? 0 : Theme.symbol + Theme.spacing

    // Measured apart: what a Text says of itself depends on the width that it is given.
    readonly property real textWidth: Math.ceil(metrics.advanceWidth) + 1

    implicitWidth: symbolRoom + textWidth
    implicitHeight: Math.max(iconName === "" ? 0 : Theme.symbol, content.implicitHeight)

    TextMetrics {
        id: metrics

        text: label.text
        font: content.font
    }
    Row {
        anchors.centerIn: parent
        spacing: Theme.spacing

        SvgImage {
            anchors.verticalCenter: parent.verticalCenter
            visible: label.iconName !== ""
            width: Theme.symbol
            height: Theme.symbol
            name: label.iconName === "" ? "" : "symbols/" + label.iconName
            tint: label.color
        }
        Text {
            id: content

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(label.textWidth, Math.max(1, label.width - label.symbolRoom))
            text: label.text
            textFormat: Text.PlainText
            color: label.color
            font.pixelSize: Theme.body
            font.weight: label.fontWeight
            wrapMode: Text.Wrap
            horizontalAlignment: label.iconName === "" ? Text.AlignHCenter : Text.AlignLeft
        }
    }
}
