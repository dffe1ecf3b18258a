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
    // The background that the extension decided on, by the platform's number: 4 is red. Others are not painted.
    required property int decidedColor

    readonly property bool red: decidedColor === 4
    readonly property bool current: ListView.isCurrentItem
    readonly property bool listHasFocus: ListView.view !== null && ListView.view.activeFocus
    readonly property color redBackground: current ? (Theme.dark ? "#6f3136" : "#f6bcbc")
                                           : hover.hovered ? (Theme.dark ? "#5a2c30" : "#fad5d4")
                                           : (Theme.dark ? "#4a2528" : "#fde4e3")
    readonly property color plainBackground: current ? Theme.selection : hover.hovered ? Theme.hover : "transparent"
    // The usual grey is too faint on a coloured background.
    readonly property color secondary: !red && !current && !hover.hovered ? Theme.secondary
                                       : Theme.dark ? "#d0d0d6" : "#4a4a52"

    signal chosen(int row)

    height: 90
    Accessible.role: Accessible.ListItem
    Accessible.name: sender + ", " + subject + (date ? ", " + date : "")
    Accessible.description: red ? "Red background" : ""
    Accessible.selected: current
    Accessible.onPressAction: row.chosen(row.index)

    Rectangle {
        objectName: "rowBackground"
        anchors.fill: parent
        anchors.margins: 4
        radius: 6
        color: row.red ? row.redBackground : row.plainBackground
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
                color: row.secondary
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
            color: row.secondary
            font.pixelSize: Theme.caption
        }
    }
}
