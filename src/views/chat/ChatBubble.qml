import QtQuick
import Quillmate.Views

// One message's text, which can be selected; as wide as it needs up to a bound.
Item {
    id: bubble

    required property bool sentByCurrentUser
    required property string body
    required property string note
    required property bool rightToLeft
    required property real maximumWidth
    signal copyAllClicked

    readonly property color textColor: sentByCurrentUser ? "white" : Theme.primary

    implicitWidth: Math.max(text.width, longTextNote.visible ? longTextNote.width : 0) + 2 * Theme.padding
    implicitHeight: text.height + (longTextNote.visible ? longTextNote.height + Theme.spacing : 0) + 2 * Theme.padding

    ContinuousRectangle {
        objectName: "bubbleField"
        anchors.fill: parent
        radius: Theme.cornerRadius
        color: bubble.sentByCurrentUser ? Theme.userBubble : "transparent"
        borderColor: bubble.sentByCurrentUser ? "transparent" : Theme.primary
        borderWidth: 0.5
    }
    TextEdit {
        id: text

        objectName: "bubbleText"
        x: Theme.padding
        y: Theme.padding
        width: Math.min(Math.ceil(implicitWidth), Math.max(1, bubble.maximumWidth - 2 * Theme.padding))
        text: bubble.body
        textFormat: TextEdit.PlainText
        readOnly: true
        selectByMouse: true
        persistentSelection: true
        wrapMode: TextEdit.Wrap
        horizontalAlignment: bubble.rightToLeft ? TextEdit.AlignRight : TextEdit.AlignLeft
        color: bubble.textColor
        selectionColor: bubble.sentByCurrentUser ? "white" : Theme.selection
        selectedTextColor: bubble.sentByCurrentUser ? Theme.userBubble : Theme.primary
        font.pixelSize: Theme.body
        Accessible.role: Accessible.StaticText
        Accessible.name: bubble.body
    }
    LongTextNote {
        id: longTextNote

        visible: note !== ""
        anchors.top: text.bottom
        anchors.topMargin: Theme.spacing
        x: Theme.padding
        width: bubble.maximumWidth - 2 * Theme.padding
        note: bubble.note
        color: bubble.sentByCurrentUser ? "white" : Theme.secondary
        onCopyAllClicked: bubble.copyAllClicked()
    }
}
