import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Views

// A text that can be selected, as high as it needs to be up to a bound, and scrolls past that. A note says when only a
// part of it is shown, and offers all of it.
Flickable {
    id: view

    required property string text
    property string note: ""
    property real maximumHeight: 300
    signal copyAllClicked

    function show(cursor: rect) {
        if (cursor.y < contentY)
            contentY = cursor.y;
        else if (cursor.y + cursor.height > contentY + height)
            contentY = cursor.y + cursor.height - height;
    }

    implicitHeight: Math.min(column.implicitHeight, maximumHeight)
    contentWidth: width
    contentHeight: column.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    clip: true
    onTextChanged: contentY = 0

    ScrollBar.vertical: ScrollBar {
        policy: view.interactive ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
        Accessible.ignored: true
    }

    Column {
        id: column

        width: view.width
        spacing: Theme.spacing

        TextEdit {
            id: edit

            objectName: "scrollableText"
            width: parent.width - 12 // The scroll bar's, whether there is one or not.
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
            onCursorRectangleChanged: if (activeFocus) view.show(cursorRectangle)

            FocusRing {
                shown: edit.activeFocus
                distance: 0
                radius: 4
            }
        }
        LongTextNote {
            visible: view.note !== ""
            width: edit.width
            note: view.note
            onCopyAllClicked: view.copyAllClicked()
        }
    }
}
