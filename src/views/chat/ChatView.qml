import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// The chat about the message: what was said, and where to say more.
Item {
    id: screen

    required property ChatViewState viewState

    readonly property real minimumHeight: 100 + Theme.spacing + input.implicitHeight + 2 * Theme.padding
    readonly property bool onScreen: visible && Window.window !== null

    implicitHeight: 300 + Theme.spacing + input.implicitHeight + 2 * Theme.padding
    onOnScreenChanged: viewState.setShown(onScreen)
    Component.onCompleted: viewState.setShown(onScreen)
    Component.onDestruction: viewState.setShown(false)

    BackgroundView {
        anchors.fill: parent
        radius: Theme.cornerRadius
    }
    ColumnLayout {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: Theme.padding
        height: Math.min(implicitHeight, screen.height - 2 * Theme.padding)
        spacing: Theme.spacing

        ChatMessageList {
            objectName: "chatMessages"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredHeight: 300
            Layout.maximumHeight: 300
            viewState: screen.viewState
            onSentAgain: input.takeKeyboard() // From the button, which is gone.
        }
        ChatInput {
            id: input

            Layout.fillWidth: true
            viewState: screen.viewState
        }
    }
}
