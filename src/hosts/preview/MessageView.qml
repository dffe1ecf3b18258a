import QtQuick
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// The chosen message, with what can be done with it above it.
ColumnLayout {
    id: view

    required property MailWindowState mail

    component Line: Text {
        Layout.fillWidth: true
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: Theme.secondary
        font.pixelSize: Theme.caption
    }

    spacing: 0

    RowLayout {
        Layout.fillWidth: true
        Layout.margins: Theme.padding
        spacing: Theme.spacing

        FramedButton {
            objectName: "replyButton"
            text: "Reply"
            prominent: true
            enabled: view.mail.loaded
            onClicked: view.mail.reply()
        }
        FramedButton {
            objectName: "forwardButton"
            text: "Forward"
            enabled: view.mail.loaded
            onClicked: view.mail.forward()
        }
        Item {
            Layout.fillWidth: true
        }
        FramedButton {
            objectName: "newMessageButton"
            text: "New message"
            onClicked: view.mail.writeNew()
        }
    }
    Separator {
        Layout.fillWidth: true
    }
    Item {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: !view.mail.loaded

        Text {
            anchors.centerIn: parent
            width: Math.min(360, parent.width - 2 * Theme.padding)
            text: view.mail.failure || (view.mail.currentIndex >= 0 ? "Reading the message…" : view.mail.listing ? ""
                                        : "Write a new message to see the assistant beside it.")
            textFormat: Text.PlainText
            color: Theme.secondary
            font.pixelSize: Theme.body
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.margins: Theme.padding
        visible: view.mail.loaded
        spacing: 4

        Line {
            text: view.mail.subject
            wrapMode: Text.Wrap
            maximumLineCount: 3
            color: Theme.primary
            font.pixelSize: Theme.title2
            font.bold: true
        }
        Line {
            text: view.mail.sender
            horizontalAlignment: Text.AlignLeft
            color: Theme.primary
            font.pixelSize: Theme.body
        }
        Line {
            visible: view.mail.recipients.length > 0
            text: "to " + view.mail.recipients
        }
        Line {
            visible: view.mail.date.length > 0
            text: view.mail.date
        }
        Line {
            Layout.topMargin: 4
            objectName: "remoteImagesNotice"
            visible: view.mail.remoteImages.length > 0
            text: view.mail.remoteImages
            wrapMode: Text.Wrap
            elide: Text.ElideNone
        }
    }
    MessageBody {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: view.mail.loaded
        areaName: "messageText"
        name: "Message text"
        text: view.mail.text.length > 0 ? view.mail.text : "This message has no text."
        color: view.mail.text.length > 0 ? Theme.primary : Theme.secondary
        readOnly: true
    }
}
