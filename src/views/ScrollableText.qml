import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// A text that can be selected, as high as it needs to be up to a bound, and scrolls past that.
ScrollView {
    id: view

    required property string text
    property real maximumHeight: 300

    implicitHeight: Math.min(edit.implicitHeight, maximumHeight)
    contentWidth: availableWidth
    clip: true
    ScrollBar.horizontal.policy: ScrollBar.AlwaysOff

    TextEdit {
        id: edit

        objectName: "scrollableText"
        width: view.availableWidth
        text: view.text
        textFormat: TextEdit.PlainText
        readOnly: true
        selectByMouse: true
        selectByKeyboard: true
        persistentSelection: true
        activeFocusOnTab: true
        wrapMode: TextEdit.Wrap
        color: Theme.primary
        selectionColor: Theme.selection
        selectedTextColor: Theme.primary
        font.pixelSize: Theme.body
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
