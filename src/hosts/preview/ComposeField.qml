import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// One line of the message's head: what it is, and the text.
FocusScope {
    id: field

    required property string label
    property alias text: input.text
    property alias alignment: input.horizontalAlignment

    implicitHeight: 36

    Rectangle {
        anchors.fill: parent
        color: Theme.controlBackground
    }
    Text {
        id: caption

        anchors.left: parent.left
        anchors.leftMargin: Theme.padding
        anchors.verticalCenter: parent.verticalCenter
        width: 60
        text: field.label
        color: Theme.secondary
        font.pixelSize: Theme.body
        Accessible.ignored: true
    }
    TextField {
        id: input

        anchors.left: caption.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.rightMargin: Theme.padding
        leftPadding: 0
        focus: true
        selectByMouse: true
        color: Theme.primary
        font.pixelSize: Theme.body
        background: null
        Accessible.name: field.label
        // A long text shows its beginning, not its end.
        Component.onCompleted: cursorPosition = 0
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 1
        color: input.activeFocus ? Theme.focusRing : Theme.separator
    }
}
