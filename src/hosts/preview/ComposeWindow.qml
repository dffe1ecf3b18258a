import QtQuick
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// The message being written, and the extension's panel at its right.
HostWindow {
    id: window

    required property ComposeWindowState compose

    width: 1080
    height: 680
    title: compose.title

    onClosing: compose.closed()

    RowLayout {
        anchors.fill: parent
        spacing: 0

        ComposeView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            compose: window.compose
            onCloseClicked: window.close()
        }
        Separator {
            Layout.fillHeight: true
        }
        PanelArea {
            Layout.fillHeight: true
            Layout.preferredWidth: Math.round(Math.max(Theme.panelMinimumWidth,
                                                       Math.min(Theme.panelMaximumWidth, window.width * 0.42)))
            compose: window.compose
        }
    }
}
