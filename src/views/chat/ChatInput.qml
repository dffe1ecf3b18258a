import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmate.Views

// Where the user writes to the assistant. The return key sends also while an answer is awaited.
RowLayout {
    id: line

    required property ChatViewState viewState

    spacing: Theme.spacing

    T.TextField {
        id: input

        objectName: "chatInput"
        Layout.fillWidth: true
        implicitHeight: Math.max(40, contentHeight + 16)
        leftPadding: Theme.padding
        rightPadding: Theme.padding
        verticalAlignment: TextInput.AlignVCenter
        placeholderText: "Ask questions here"
        color: Theme.secondary
        selectionColor: Theme.selection
        selectedTextColor: Theme.primary
        selectByMouse: true
        font.pixelSize: Theme.body
        Accessible.name: placeholderText
        onTextChanged: line.viewState.newMessageText = text
        onAccepted: line.viewState.sendMessage()

        background: ContinuousRectangle {
            radius: Theme.cornerRadius
            borderColor: input.activeFocus ? Theme.focusRing : Theme.secondary
        }

        Text {
            anchors.fill: parent
            leftPadding: input.leftPadding
            rightPadding: input.rightPadding
            visible: input.text === "" && input.preeditText === ""
            text: input.placeholderText
            color: Theme.secondary
            font: input.font
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
        }
        Connections {
            target: line.viewState

            function onNewMessageTextChanged() {
                if (input.text !== line.viewState.newMessageText)
                    input.text = line.viewState.newMessageText;
            }
        }
        Component.onCompleted: text = line.viewState.newMessageText
    }
    Item {
        implicitWidth: Theme.controlHeight
        implicitHeight: Theme.controlHeight

        ActivityIndicator {
            anchors.fill: parent
            anchors.margins: 4
            objectName: "chatSpinner"
            running: line.viewState.isLoading
        }
        PlainButton {
            id: send

            anchors.fill: parent
            objectName: "sendButton"
            visible: !line.viewState.isLoading
            text: "Send"
            padding: 4
            onClicked: line.viewState.sendMessage()

            contentItem: SvgImage {
                name: "symbols/paperplane.fill"
                tint: send.hovered ? Theme.accentText : Theme.primary
            }
        }
    }
}
