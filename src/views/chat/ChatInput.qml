import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Views

// Where the user writes to the assistant, on as many lines as are seen at a time up to five. The return key sends also
// while an answer is awaited; with Shift it begins a line.
RowLayout {
    id: line

    required property ChatViewState viewState

    function takeKeyboard() {
        input.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: Theme.spacing

    ScrollView {
        id: field

        readonly property int mostLines: 5

        objectName: "chatField"
        Layout.fillWidth: true
        implicitHeight: {
            const lines = input.contentHeight * Math.min(1, mostLines / input.lineCount);
            return Math.max(40, Math.ceil(lines) + input.topPadding + input.bottomPadding);
        }
        ScrollBar.horizontal.policy: ScrollBar.AlwaysOff

        background: ContinuousRectangle {
            radius: Theme.cornerRadius
            borderColor: input.activeFocus ? Theme.focusRing : Theme.secondary
        }

        TextArea {
            id: input

            // A key that is held sends once. What an input method has not finished yet is finished first.
            function sendOrFinish(event: var) {
                event.accepted = !(event.modifiers & Qt.ShiftModifier);
                if (!event.accepted || event.isAutoRepeat)
                    return;
                if (inputMethodComposing)
                    Qt.inputMethod.commit();
                else
                    line.viewState.sendMessage();
            }

            objectName: "chatInput"
            leftPadding: Theme.padding
            rightPadding: Theme.padding
            topPadding: 8
            bottomPadding: 8
            verticalAlignment: TextEdit.AlignVCenter
            placeholderText: "Ask questions here"
            placeholderTextColor: Theme.secondary
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            color: Theme.secondary
            selectionColor: Theme.selection
            selectedTextColor: Theme.primary
            font.pixelSize: Theme.body
            background: null
            Accessible.name: placeholderText
            Keys.priority: Keys.BeforeItem
            Keys.onReturnPressed: event => sendOrFinish(event)
            Keys.onEnterPressed: event => sendOrFinish(event)
            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            onTextChanged: line.viewState.newMessageText = text
            Component.onCompleted: text = line.viewState.newMessageText

            Connections {
                target: line.viewState

                function onNewMessageTextChanged() {
                    if (input.text !== line.viewState.newMessageText)
                        input.text = line.viewState.newMessageText;
                }
            }
        }
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
