import QtQuick
import Quillmate.Views

// A line between two parts of a window, as long as its layout makes it.
Rectangle {
    implicitWidth: 1
    implicitHeight: 1
    color: Theme.separator
}
