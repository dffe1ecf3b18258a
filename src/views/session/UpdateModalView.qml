import QtQuick
import QtQuick.Layouts
import Quillmate.Views

// Says that there is a newer version. The way out stays at hand.
Item {
    id: notice

    required property SessionTabsViewState viewState

    component Choice: FramedButton {
        Layout.fillWidth: true
        Layout.minimumWidth: 80
        Layout.maximumWidth: Math.ceil(implicitWidth) + 1
        horizontalPadding: 10
        font.bold: true
        font.pixelSize: Theme.headline
    }

    // Whatever lies below, the notice is read on a plain ground.
    ContinuousRectangle {
        anchors.fill: block
        anchors.margins: -Theme.spacing
        radius: Theme.cornerRadius
        color: Theme.windowBackground
    }
    ColumnLayout {
        id: block

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: Theme.padding
        spacing: Theme.spacing

        PanelHeader {
            Layout.fillWidth: true
            onLogOutClicked: notice.viewState.modal.logOutClicked()
        }
        Item {
            Layout.fillWidth: true
            implicitHeight: column.implicitHeight + 2 * Theme.smallPadding

            ContinuousRectangle {
                objectName: "noticeField"
                anchors.fill: parent
                radius: 8
                color: Theme.notice
                borderColor: Theme.indigo
            }
            ColumnLayout {
                id: column

                anchors.fill: parent
                anchors.margins: Theme.smallPadding
                spacing: Theme.spacing

                Text {
                    Layout.fillWidth: true
                    text: "New version available!"
                    color: Theme.primary
                    font.pixelSize: Theme.title2
                    font.bold: true
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    Layout.fillWidth: true
                    text: "A new version of the Quillmate app was released. Download the new version to use the latest updates."
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                    color: Theme.noticeSecondary
                    font.pixelSize: Theme.subheadline
                    wrapMode: Text.Wrap
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: Theme.spacing

                    Choice {
                        objectName: "remindMeLaterButton"
                        text: "Remind me later"
                        onClicked: notice.viewState.remindMeLaterClicked()
                    }
                    Item {
                        Layout.fillWidth: true
                    }
                    Choice {
                        objectName: "updateNowButton"
                        text: "Update now"
                        onClicked: notice.viewState.updateNowClicked()
                    }
                }
            }
        }
    }
}
