import QtQuick
import Quillmate.Views

// A symbol and a text side by side, in the middle of the item. An empty name leaves the symbol out.
Item {
    id: label

    required property string text
    required property string iconName
    required property color color
    property int fontWeight: Font.Normal

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    Row {
        id: row

        anchors.centerIn: parent
        spacing: Theme.spacing

        SvgImage {
            anchors.verticalCenter: parent.verticalCenter
            visible: label.iconName !== ""
            width: 16
            height: 16
            name: label.iconName === "" ? "" : "symbols/" + label.iconName
            tint: label.color
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: label.text
            textFormat: Text.PlainText
            color: label.color
            font.pixelSize: Theme.body
            font.weight: label.fontWeight
        }
    }
}
