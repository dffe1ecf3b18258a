import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// Replies to the message: the first one, or the one there is with what can be done with it.
Item {
    id: section

    required property ReplySectionState viewState

    readonly property bool showsReply: viewState.showsReply

    // With a few lines of the reply in sight.
    readonly property real minimumHeight: content.implicitHeight - (showsReply ? Math.max(0, reply.implicitHeight - 6 * Theme.body) : 0)

    // The keyboard stays on the button that stands in the place of the one it was on.
    onShowsReplyChanged: {
        const gone = showsReply ? generateButton : regenerateButton;
        if (gone.activeFocus)
            (showsReply ? regenerateButton : generateButton).forceActiveFocus(Qt.TabFocusReason);
    }

    ColumnLayout {
        id: content

        anchors.fill: parent
        spacing: Theme.spacing

        Text {
            Layout.fillWidth: true
            visible: !section.showsReply
            text: "Generate instant responses based on the selected email."
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            color: Theme.primary
            font.pixelSize: Theme.body
            font.weight: Font.Light
            wrapMode: Text.Wrap
        }
        SessionButton {
            id: generateButton

            Layout.fillWidth: true
            objectName: "generateButton"
            visible: !section.showsReply
            label: "Generate response"
            iconName: "captions.bubble"
            backgroundColor: Theme.indigo
            borderColor: "transparent"
            onClicked: section.viewState.generateClicked()
        }
        SessionButton {
            id: regenerateButton

            Layout.fillWidth: true
            objectName: "regenerateButton"
            visible: section.showsReply
            label: "Regenerate response"
            iconName: "repeat.circle"
            backgroundColor: "transparent"
            borderColor: Theme.purple
            onClicked: section.viewState.generateClicked()
        }
        Text {
            Layout.fillWidth: true
            visible: section.showsReply
            text: "Regenerating a response will use additional tokens"
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            color: Theme.primary
            font.pixelSize: Theme.body
            font.italic: true
            font.weight: Font.Light
            wrapMode: Text.Wrap
        }
        ScrollableText {
            id: reply

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 3 * Theme.body
            Layout.margins: Theme.smallPadding
            objectName: "replyText"
            visible: section.showsReply
            text: section.viewState.replyText
            note: section.viewState.replyNote
            onCopyAllClicked: section.viewState.copyClicked()
        }
        RowLayout {
            id: actions

            readonly property real buttonHeight: Math.max(submitButton.implicitHeight, copyButton.implicitHeight)

            Layout.fillWidth: true
            visible: section.showsReply
            spacing: Theme.spacing

            SessionButton {
                id: submitButton

                Layout.fillWidth: true
                Layout.minimumWidth: 80
                Layout.maximumWidth: implicitWidth
                Layout.preferredHeight: actions.buttonHeight
                objectName: "submitButton"
                label: "Submit to train AI"
                iconName: "info.circle"
                backgroundColor: "transparent"
                borderColor: Theme.blue
                onClicked: section.viewState.submitClicked()
            }
            Item {
                Layout.fillWidth: true
            }
            SessionButton {
                id: copyButton

                Layout.fillWidth: true
                Layout.minimumWidth: 80
                Layout.maximumWidth: implicitWidth
                Layout.preferredHeight: actions.buttonHeight
                objectName: "copyButton"
                label: "Copy to clipboard"
                iconName: "doc.on.doc"
                backgroundColor: Theme.blue
                borderColor: Theme.blue
                onClicked: section.viewState.copyClicked()
            }
        }
        Item {
            Layout.fillHeight: true
            visible: !section.showsReply
        }
    }
}
