import QtQuick
import Quillmate.Views

// Stands below a text of which only the beginning is shown.
Column {
    id: longTextNote

    required property string note
    property color color: Theme.secondary
    signal copyAllClicked

    spacing: Theme.smallPadding

    Text {
        width: parent.width
        text: longTextNote.note
        color: longTextNote.color
        font.pixelSize: Theme.caption
        font.italic: true
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    PlainButton {
        id: copyAll

        text: "Copy all of it"
        horizontalPadding: 8
        verticalPadding: 4
        onClicked: longTextNote.copyAllClicked()

        background: ContinuousRectangle {
            radius: 6
            borderColor: longTextNote.color
            borderWidth: copyAll.hovered ? 2 : 1
        }
        contentItem: IconLabel {
            text: copyAll.text
            iconName: ""
            color: longTextNote.color
        }
    }
}
