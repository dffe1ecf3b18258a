import QtQuick
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
        if (view.compose.to.length > 0)
            body.forceActiveFocus();
        else
            to.forceActiveFocus();
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
        FramedButton {
            objectName: "messagesButton"
            text: "Messages"
            onClicked: view.compose.messagesRequested()
        }
        FramedButton {
            objectName: "closeButton"
            text: "Close"
            onClicked: view.closeClicked()
        }
    }
    Separator {
        Layout.fillWidth: true
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
    MessageBody {
        id: body

        Layout.fillWidth: true
        Layout.fillHeight: true
        areaName: "bodyArea"
        name: "Message"
        text: view.compose.body

        background: Rectangle {
            color: Theme.controlBackground
        }
    }
}
