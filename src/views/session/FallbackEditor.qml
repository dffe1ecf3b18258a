import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Views

// Where the user pastes the message when it could not be summarised.
ColumnLayout {
    id: editor

    required property SessionModalViewState viewState

    spacing: Theme.spacing

    // Setting the text is no edit. The control also writes some characters otherwise than it got them (it knows no
    // non-breaking space), and what is kept must not change for having been looked at.
    property bool loading: false

    function load() {
        if (input.text !== viewState.textareaInput) {
            loading = true;
            input.text = viewState.textareaInput;
            loading = false;
        }
    }

    Component.onCompleted: viewState.fallbackEditorAppeared()

    Connections {
        target: editor.viewState

        function onTextareaInputChanged() {
            editor.load();
        }
    }

    Text {
        Layout.fillWidth: true
        Layout.margins: Theme.smallPadding
        text: "Email content cannot be loaded!"
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        color: Theme.primary
        font.pixelSize: Theme.title
        wrapMode: Text.Wrap
    }
    Text {
        Layout.fillWidth: true
        Layout.margins: Theme.smallPadding
        text: "Please copy the content and send it manually"
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        color: Theme.primary
        font.pixelSize: Theme.body
        wrapMode: Text.Wrap
    }
    Item {
        Layout.fillWidth: true
        Layout.preferredHeight: 150

        ContinuousRectangle {
            anchors.fill: parent
            radius: Theme.cornerRadius
            borderColor: input.activeFocus ? Theme.focusRing : Theme.separator
        }
        ScrollView {
            anchors.fill: parent
            anchors.margins: 2
            ScrollBar.horizontal.policy: ScrollBar.AlwaysOff

            TextArea {
                id: input

                objectName: "fallbackInput"
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                selectByMouse: true
                color: Theme.primary
                selectionColor: Theme.selection
                selectedTextColor: Theme.primary
                font.pixelSize: Theme.body
                background: null
                Accessible.name: "Email content"
                Accessible.description: hint.text
                KeyNavigation.priority: KeyNavigation.BeforeItem
                KeyNavigation.tab: summarizeButton
                onTextChanged: if (!editor.loading) editor.viewState.textareaInput = text

                // The control's own placeholder knows one line only.
                Text {
                    id: hint

                    x: input.leftPadding
                    y: input.topPadding
                    width: input.width - input.leftPadding - input.rightPadding
                    objectName: "fallbackHint"
                    visible: input.length === 0 && input.preeditText === ""
                    text: editor.viewState.textareaHint
                    color: Theme.secondary
                    font: input.font
                    wrapMode: Text.Wrap
                }
            }
        }
        LoadingOverlay {
            anchors.fill: parent
            objectName: "fallbackLoading"
            shown: editor.viewState.isSummarizing
        }
    }
    SessionButton {
        id: summarizeButton

        Layout.fillWidth: true
        objectName: "summarizeButton"
        label: "Summarize"
        iconName: "wand.and.stars"
        backgroundColor: "transparent"
        borderColor: Theme.blue
        onClicked: editor.viewState.summarizeClicked()
    }
}
