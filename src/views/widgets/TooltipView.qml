import QtQuick
import Quillmate.Views

// A small notice that fades in and out.
ContinuousRectangle {
    id: tooltip

    required property string message
    property bool shown: true

    implicitWidth: text.implicitWidth + 20
    implicitHeight: text.implicitHeight + 20
    radius: 8
    color: Qt.rgba(0, 0, 0, 0.7)
    opacity: shown ? 1 : 0
    visible: shown || opacity > 0
    Accessible.role: Accessible.ToolTip
    Accessible.name: message
    onShownChanged: if (shown) Announcer.alert(tooltip)

    Behavior on opacity {
        NumberAnimation {
            duration: Theme.quick
        }
    }

    Text {
        id: text

        anchors.centerIn: parent
        text: tooltip.message
        textFormat: Text.PlainText
        color: "white"
        font.pixelSize: Theme.body
    }
}
