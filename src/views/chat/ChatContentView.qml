import QtQuick
import Quillmate.Views

// The chat by itself.
Item {
    id: content

    required property ChatViewState viewState

    implicitWidth: 400
    implicitHeight: Math.min(500, chat.implicitHeight)

    BackgroundView {
        anchors.fill: parent
    }
    ChatView {
        id: chat

        objectName: "chatView"
        anchors.centerIn: parent
        width: Math.min(400, content.width)
        height: Math.min(500, content.height)
        viewState: content.viewState
    }
}
