import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Preview
import Quillmate.Views

// A message's text, shown from its beginning; each paragraph runs in the direction of its own script.
ScrollView {
    id: view

    required property string text
    required property string name
    property alias areaName: area.objectName
    property alias readOnly: area.readOnly
    property alias color: area.color

    function begin() {
        area.text = text;
        ParagraphDirection.apply(area.textDocument);
        area.cursorPosition = 0;
        (contentItem as Flickable).contentY = 0;
    }

    contentWidth: availableWidth
    onTextChanged: begin()
    Component.onCompleted: begin()

    TextArea {
        id: area

        focus: true
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        selectByMouse: true
        leftPadding: Theme.padding
        rightPadding: Theme.padding
        topPadding: readOnly ? 0 : Theme.padding
        bottomPadding: Theme.padding
        color: Theme.primary
        font.pixelSize: Theme.body
        background: null
        Accessible.name: view.name
        // Tab goes on to the next control, as everywhere else in the window.
        Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason) // qmllint disable
    }
}
