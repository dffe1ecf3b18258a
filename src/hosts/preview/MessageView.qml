import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// The chosen message, with what can be done with it above it.
ColumnLayout {
    id: view

    required property MailWindowState mail

    spacing: 0

    function orderParagraphs() {
        ParagraphDirection.apply(body.textDocument);
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.margins: Theme.padding
        spacing: Theme.spacing

        HostButton {
            objectName: "replyButton"
            text: "Reply"
            prominent: true
            enabled: view.mail.loaded
            onClicked: view.mail.reply()
        }
        HostButton {
            objectName: "forwardButton"
            text: "Forward"
            enabled: view.mail.loaded
            onClicked: view.mail.forward()
        }
        Item {
            Layout.fillWidth: true
        }
        HostButton {
            objectName: "newMessageButton"
            text: "New message"
            onClicked: view.mail.writeNew()
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.preferredHeight: 1
        color: Theme.separator
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

        Text {
            Layout.fillWidth: true
            text: view.mail.subject
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            color: Theme.primary
            font.pixelSize: Theme.title2
            font.bold: true
        }
        Text {
            Layout.fillWidth: true
            text: view.mail.sender
            textFormat: Text.PlainText
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignLeft
            color: Theme.primary
            font.pixelSize: Theme.body
        }
        Text {
            Layout.fillWidth: true
            visible: view.mail.recipients.length > 0
            text: "to " + view.mail.recipients
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }
        Text {
            visible: view.mail.date.length > 0
            text: view.mail.date
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }
        Text {
            Layout.fillWidth: true
            Layout.topMargin: 4
            objectName: "remoteImagesNotice"
            visible: view.mail.remoteImages.length > 0
            text: view.mail.remoteImages
            wrapMode: Text.Wrap
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }
    }
    ScrollView {
        Layout.fillWidth: true
        Layout.fillHeight: true
        visible: view.mail.loaded
        contentWidth: availableWidth

        TextArea {
            id: body

            objectName: "messageText"
            text: view.mail.text.length > 0 ? view.mail.text : "This message has no text."
            textFormat: TextEdit.PlainText
            readOnly: true
            selectByMouse: true
            wrapMode: TextEdit.Wrap
            leftPadding: Theme.padding
            rightPadding: Theme.padding
            topPadding: 0
            bottomPadding: Theme.padding
            color: view.mail.text.length > 0 ? Theme.primary : Theme.secondary
            font.pixelSize: Theme.body
            background: null
            Accessible.name: "Message text"
            // Later, since the text must not be changed while it tells of a change.
            onTextChanged: Qt.callLater(view.orderParagraphs) // qmllint disable
            // Tab goes on to the next control, as everywhere else in the window.
            Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason) // qmllint disable
        }
    }
}
