import QtQuick
import Quillmate.Views

// A passing message at the bottom of the area it is laid over.
Item {
    id: toast

    required property string message

    ContinuousRectangle {
        objectName: "field"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 40
        width: text.width + 2 * Theme.padding
        height: text.height + 2 * Theme.padding
        radius: 8
        color: "black"

        Text {
            id: text

            anchors.centerIn: parent
            width: Math.min(implicitWidth, toast.width - 4 * Theme.padding)
            text: toast.message
            textFormat: Text.PlainText
            color: "white"
            font.pixelSize: Theme.body
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
            Accessible.name: toast.message
        }
    }
}
