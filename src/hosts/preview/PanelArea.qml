import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Preview
import Quillmate.Views

// Where the extension's panel stands: as large as the area, or scrolled when it needs more height than there is.
Rectangle {
    id: area

    required property ComposeWindowState compose

    color: Theme.windowBackground

    readonly property Item panel: compose.panel

    onPanelChanged: {
        if (panel) {
            panel.parent = holder;
            panel.width = Qt.binding(() => holder.width);
            panel.height = Qt.binding(() => holder.height);
        }
    }

    Flickable {
        id: flickable

        objectName: "panelFlickable"
        anchors.fill: parent
        contentWidth: width
        contentHeight: Math.max(height, area.compose.panelMinimumHeight)
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ScrollBar {}

        Item {
            id: holder

            objectName: "panelHolder"
            width: flickable.contentWidth
            height: flickable.contentHeight
        }
    }
    Text {
        objectName: "panelNotice"
        anchors.centerIn: parent
        width: parent.width - 4 * Theme.padding
        visible: !area.panel
        text: area.compose.panelFailure || "Starting the assistant…"
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.secondary
        font.pixelSize: Theme.body
    }
}
