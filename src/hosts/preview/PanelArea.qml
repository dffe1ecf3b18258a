import QtQuick
import Quillmate.Preview
import Quillmate.Views

// Where the extension's panel stands: as large as the area, or scrolled when it needs more height than there is.
Rectangle {
    id: area

    required property ComposeWindowState compose

    readonly property Item panel: compose.panel

    color: Theme.windowBackground
    onPanelChanged: {
        if (panel) {
            panel.parent = holder;
            panel.width = Qt.binding(() => holder.width);
            panel.height = Qt.binding(() => holder.height);
        }
    }

    PanelScroll {
        anchors.fill: parent
        contentMinimumHeight: area.panel ? area.panel.implicitHeight : 0

        Item {
            id: holder

            objectName: "panelHolder"
            anchors.fill: parent
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
