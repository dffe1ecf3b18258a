import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// One message of the list: who, when, what about, and its first words.
Item {
    id: row

    required property int index
    required property string sender
    required property string subject
    required property string date
    required property string snippet

    readonly property bool current: ListView.isCurrentItem
    readonly property bool listHasFocus: ListView.view !== null && ListView.view.activeFocus

    signal chosen(int row)

    height: 90
    Accessible.role: Accessible.ListItem
    Accessible.name: sender + ", " + subject + (date ? ", " + date : "")
    Accessible.selected: current
    Accessible.onPressAction: row.chosen(row.index)

    Rectangle {
        anchors.fill: parent
        anchors.margins: 4
        radius: 6
        color: row.current ? Theme.selection : hover.hovered ? Theme.hover : "transparent"
        border.width: row.current && row.listHasFocus ? 2 : 0
        border.color: Theme.focusRing
    }
    HoverHandler {
        id: hover
    }
    TapHandler {
        onTapped: row.chosen(row.index)
    }
    ColumnLayout {
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        anchors.topMargin: 10
        anchors.bottomMargin: 10
        spacing: 2

        RowLayout {
            spacing: Theme.spacing

            Text {
                Layout.fillWidth: true
                text: row.sender
                textFormat: Text.PlainText
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignLeft
                color: Theme.primary
                font.pixelSize: Theme.body
                font.bold: true
            }
            Text {
                text: row.date
                color: Theme.secondary
                font.pixelSize: Theme.caption
            }
        }
        Text {
            Layout.fillWidth: true
            text: row.subject
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: Theme.primary
            font.pixelSize: Theme.body
        }
        Text {
            Layout.fillWidth: true
            Layout.fillHeight: true
            text: row.snippet
            textFormat: Text.PlainText
            elide: Text.ElideRight
            wrapMode: Text.Wrap
            maximumLineCount: 2
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }
    }
}
