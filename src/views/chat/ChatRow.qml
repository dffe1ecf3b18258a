import QtQuick
import Quillmate.Views

// One message of the chat: the user's on the right, the assistant's on the left beside its picture.
Item {
    id: row

    required property int index
    required property bool sentByCurrentUser
    required property bool hasBody
    required property string body
    required property string note
    required property bool rightToLeft
    // Stands below the message, with a way to send it again; empty for none.
    property string errorText: ""
    // The keyboard is on this message.
    property bool current: false
    signal copyClicked
    signal againClicked

    readonly property real room: width - 2 * Theme.smallPadding - (sentByCurrentUser ? 0 : avatar.width)

    implicitHeight: Math.max(column.height, sentByCurrentUser ? 0 : avatar.height) + 2 * Theme.smallPadding
    Accessible.role: Accessible.ListItem
    Accessible.name: body

    AvatarView {
        id: avatar

        x: Theme.smallPadding
        y: Theme.smallPadding
        visible: !row.sentByCurrentUser
    }
    Column {
        id: column

        x: row.sentByCurrentUser ? row.width - Theme.smallPadding - width : avatar.x + avatar.width
        y: Theme.smallPadding
        spacing: Theme.smallPadding
        width: Math.max(bubble.visible ? bubble.width : 0, error.visible ? error.width : 0)

        ChatBubble {
            id: bubble

            objectName: "bubble"
            anchors.right: row.sentByCurrentUser ? parent.right : undefined
            visible: row.hasBody
            sentByCurrentUser: row.sentByCurrentUser
            body: row.body
            note: row.note
            rightToLeft: row.rightToLeft
            maximumWidth: Math.min(300, row.room)
            onCopyAllClicked: row.copyClicked()

            FocusRing {
                shown: row.current
                radius: Theme.cornerRadius + distance
            }
        }
        TextEdit {
            id: error

            objectName: "errorText"
            anchors.right: parent.right
            visible: row.errorText !== ""
            width: Math.min(Math.ceil(implicitWidth), row.room)
            text: row.errorText
            textFormat: TextEdit.PlainText
            readOnly: true
            selectByMouse: true
            wrapMode: TextEdit.Wrap
            color: Theme.error
            selectionColor: Theme.selection
            selectedTextColor: Theme.primary
            font.pixelSize: Theme.body
            font.italic: true
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        FramedButton {
            objectName: "againButton"
            anchors.right: parent.right
            visible: error.visible
            text: "Try again"
            onClicked: row.againClicked()
        }
    }
}
