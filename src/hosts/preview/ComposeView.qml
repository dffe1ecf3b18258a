import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// To, subject and text of the message being written.
ColumnLayout {
    id: view

    required property ComposeWindowState compose

    signal closeClicked

    spacing: 0

    Component.onCompleted: {
        ParagraphDirection.apply(body.textDocument);
        body.cursorPosition = 0;
        (view.compose.to.length > 0 ? body : to).forceActiveFocus();
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.margins: Theme.padding
        spacing: Theme.spacing

        Text {
            Layout.fillWidth: true
            text: "This preview sends no mail."
            elide: Text.ElideRight
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }
        HostButton {
            objectName: "messagesButton"
            text: "Messages"
            onClicked: view.compose.showMessages()
        }
        HostButton {
            objectName: "closeButton"
            text: "Close"
            onClicked: view.closeClicked()
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 1
        color: Theme.separator
    }
    ComposeField {
        id: to

        Layout.fillWidth: true
        objectName: "toField"
        alignment: TextInput.AlignLeft
        label: "To"
        text: view.compose.to
    }
    ComposeField {
        Layout.fillWidth: true
        objectName: "subjectField"
        label: "Subject"
        text: view.compose.subject
    }
    ScrollView {
        Layout.fillWidth: true
        Layout.fillHeight: true
        contentWidth: availableWidth

        background: Rectangle {
            color: Theme.controlBackground
        }

        TextArea {
            id: body

            objectName: "bodyArea"
            text: view.compose.body
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            leftPadding: Theme.padding
            rightPadding: Theme.padding
            topPadding: Theme.padding
            bottomPadding: Theme.padding
            color: Theme.primary
            font.pixelSize: Theme.body
            background: null
            Accessible.name: "Message"
            // Tab goes on to the next control, as everywhere else in the window.
            Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason) // qmllint disable
        }
    }
}
