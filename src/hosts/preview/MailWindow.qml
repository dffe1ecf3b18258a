import QtQuick
import QtQuick.Layouts
import Quillmate.Preview

// The list of messages, and the chosen one beside it.
HostWindow {
    id: window

    required property MailWindowState mail

    width: 980
    height: 640
    title: "Preview Mail"

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
    RowLayout {
        anchors.fill: parent
        spacing: 0

        MessageListView {
            Layout.fillHeight: true
            Layout.preferredWidth: Math.round(Math.min(340, window.width * 0.36))
            mail: window.mail
        }
        Separator {
            Layout.fillHeight: true
        }
        MessageView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            mail: window.mail
        }
    }
}
