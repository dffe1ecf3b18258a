import QtQuick
import QtQuick.Templates as T
import Quillmate.Views

// A button without chrome of its own: pressed by mouse, keyboard and accessible action alike, named by its text.
T.AbstractButton {
    id: control

    property real cornerRadius: 6
    property int ringDistance: 2

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: !enabled ? 0.4 : down ? 0.7 : 1
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()

    // A key that is held presses once; its repetitions come as presses and releases alike.
    function pressOnce(event: var) {
        if (visible && !event.isAutoRepeat) // A hidden one may hold the keyboard still.
            clicked();
    }

    Keys.onReturnPressed: event => pressOnce(event)
    Keys.onEnterPressed: event => pressOnce(event)
    Keys.onSpacePressed: event => event.accepted = event.isAutoRepeat
    Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        shown: control.visualFocus
        distance: control.ringDistance
        radius: control.cornerRadius + distance
    }
}
