import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmate.Preview
import Quillmate.Views

// The list of messages, and the chosen one beside it.
ApplicationWindow {
    id: window

    required property MailWindowState mail

    width: 980
    height: 640
    minimumWidth: 760
    minimumHeight: 480
    title: "Preview Mail"
    color: Theme.windowBackground
    palette: HostPalette {}

    Shortcut {
        sequence: "Ctrl+N"
        autoRepeat: false
        onActivated: window.mail.writeNew()
    }
    Shortcut {
        sequence: "Ctrl+R"
        autoRepeat: false
        onActivated: window.mail.reply()
    }
    Shortcut {
        sequence: "Ctrl+L"
        autoRepeat: false
        onActivated: window.mail.forward()
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: window.close()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        MessageListView {
            Layout.fillHeight: true
            Layout.preferredWidth: Math.round(Math.min(340, window.width * 0.36))
            mail: window.mail
        }
        Rectangle {
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            color: Theme.separator
        }
        MessageView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            mail: window.mail
        }
    }
}
