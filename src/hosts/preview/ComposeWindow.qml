import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// The message being written, and the extension's panel at its right.
ApplicationWindow {
    id: window

    required property ComposeWindowState compose

    width: 1080
    height: 680
    minimumWidth: 760
    minimumHeight: 480
    title: compose.title
    color: Theme.windowBackground
    palette: HostPalette {}

    onClosing: compose.closed()

    Shortcut {
        sequence: "Ctrl+W"
        onActivated: window.close()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        ComposeView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            compose: window.compose
            onCloseClicked: window.close()
        }
        Rectangle {
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            color: Theme.separator
        }
        PanelArea {
            Layout.fillHeight: true
            Layout.preferredWidth: Math.round(Math.max(Theme.panelMinimumWidth,
                                                       Math.min(Theme.panelMaximumWidth, window.width * 0.42)))
            compose: window.compose
        }
    }
}
