import QtQuick
import Quillmate.Views

// A spinner in the middle of the area it is laid over, on a ground that sets it off from what lies below.
Item {
    id: overlay

    required property bool shown

    visible: shown

    ContinuousRectangle {
        anchors.centerIn: parent
        width: 50
        height: 50
        radius: Theme.cornerRadius
        color: Theme.raised
        borderColor: Theme.separator

        ActivityIndicator {
            anchors.fill: parent
            anchors.margins: 9
            running: overlay.shown
        }
    }
}
