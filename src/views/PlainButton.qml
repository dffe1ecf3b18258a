import QtQuick
import QtQuick.Templates as T
import Quillmate.Views

// A button without chrome of its own: pressed by mouse, keyboard and accessible action alike, named by its text.
T.AbstractButton {
    id: control

    property real cornerRadius: 6

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: !enabled ? 0.4 : down ? 0.7 : 1
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()

    Keys.onReturnPressed: event => {
        if (visible && !event.isAutoRepeat) // A hidden one may hold the keyboard still.
            clicked();
    }
    Keys.onEnterPressed: event => {
        if (visible && !event.isAutoRepeat) // A hidden one may hold the keyboard still.
            clicked();
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        shown: control.visualFocus
        radius: control.cornerRadius + distance
    }
}
