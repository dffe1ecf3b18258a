import QtQuick
import Quillmate.Views

// Shows which control the keyboard is on. Laid around the control that holds it.
ContinuousRectangle {
    required property bool shown
    property int distance: 2

    anchors.fill: parent
    anchors.margins: -distance
    visible: shown
    borderColor: Theme.focusRing
    borderWidth: 2
}
