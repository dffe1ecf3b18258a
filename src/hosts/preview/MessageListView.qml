import QtQuick
import QtQuick.Controls.Basic
import Quillmate.Preview
import Quillmate.Views

// The messages in their order; arrow keys choose, Return replies.
Rectangle {
    id: view

    required property MailWindowState mail

    color: Theme.controlBackground

    ListView {
        id: list

        objectName: "messageList"
        anchors.fill: parent
        model: view.mail.messages
        currentIndex: view.mail.currentIndex
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        keyNavigationEnabled: false
        Accessible.role: Accessible.List
        Accessible.name: "Messages"
        ScrollBar.vertical: ScrollBar {}

        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / 90) - 1);
            const steps = {
                [Qt.Key_Up]: -1,
                [Qt.Key_Down]: 1,
                [Qt.Key_PageUp]: -page,
                [Qt.Key_PageDown]: page,
                [Qt.Key_Home]: -count,
                [Qt.Key_End]: count
            };
            if (event.key in steps && count > 0) {
                view.mail.currentIndex = Math.max(0, Math.min(count - 1, currentIndex + steps[event.key]));
                event.accepted = true;
            } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
                if (!event.isAutoRepeat)
                    view.mail.reply();
                event.accepted = true;
            }
        }

        delegate: MessageRow {
            width: ListView.view.width
            onChosen: row => {
                list.forceActiveFocus();
                view.mail.currentIndex = row;
            }
        }
    }
    Text {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.padding
        visible: list.count === 0
        text: view.mail.listing ? "Reading the messages…" : "There are no messages here. Start quillmate with the name of "
                                  + "an .eml file, an mbox or a Maildir to see some."
        color: Theme.secondary
        font.pixelSize: Theme.body
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
    }
}
