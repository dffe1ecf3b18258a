import QtQuick
import Quillmate.Views

// White in the light appearance; clear in the dark one, where what lies behind shows.
Rectangle {
    color: Theme.dark ? "transparent" : "white"
}
