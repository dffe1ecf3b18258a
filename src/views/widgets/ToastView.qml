import QtQuick
import Quillmate.Views

// A passing message at the bottom of the area it is laid over; a screen reader says it when it comes up.
Item {
    id: toast

    required property string message
    property bool shown: true

    function announce() {
        if (shown && message !== "")
            Announcer.alert(text);
    }

    opacity: shown ? 1 : 0
    visible: shown || opacity > 0
    onShownChanged: announce()
    onMessageChanged: announce()

    Behavior on opacity {
        NumberAnimation {
            duration: Theme.quick
        }
    }

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
            // Even, so that the middle falls on a pixel.
            width: Math.min(2 * Math.ceil(implicitWidth / 2), Math.max(1, toast.width - 4 * Theme.padding))
            text: toast.message
            textFormat: Text.PlainText
            color: "white"
            font.pixelSize: Theme.body
            wrapMode: Text.Wrap
            // A service may say anything; the panel below must stay in sight.
            maximumLineCount: 6
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
            Accessible.name: toast.message
        }
    }
}
